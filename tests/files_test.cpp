#include "services/files/attributes.h"
#include "services/files/copy.h"
#include "services/files/create.h"
#include "services/files/delete.h"
#include "services/files/existence.h"
#include "support.h"

namespace {

/// All that a folder holds, links unfollowed.
std::string Contents(const Node &folder) {
  std::string text;
  for (const auto &[name, node] : folder.entries) {
    text += name + " " + std::to_string(node->attributes) + " '" + node->bytes + "' {" + Contents(*node) + "}\n";
  }
  return text;
}

class FilesTest : public LibraryTest {
 protected:
  FilesTest() {
    for (const char *file : {"C:\\a\\1.txt", "C:\\a\\2.txt", "C:\\a\\3.log", "C:\\a\\s\\1.txt", "C:\\a\\t\\u\\1.txt"}) {
      world.WriteFile(file, file);
    }
  }

  static bool DeleteTree(const char *path, bool files = true, bool removeFolders = true, int *count = nullptr) {
    return iwiDeletePattern({.countOnly = count != nullptr,
                             .execute = true,
                             .ticks = count,
                             .path = path,
                             .deleteFiles = files,
                             .removeFolders = removeFolders,
                             .recurse = true});
  }
};

TEST_F(FilesTest, Existence) {
  static std::string found;
  const auto findFile = [](const std::string &path) { return iwiFindFile(path, &found); };
  const auto extension = [](const std::string &path) { return iwiFindExtension(path, found); };
  world.WriteFile("C:\\x\\tempo", "");
  world.MakeFolder("C:\\x\\temporary");
  const std::tuple<bool (*)(const std::string &), std::string, DWORD, bool, std::string> cases[] = {
      {iwiFileExists, "C:\\A\\1.TXT", 0, true, ""},
      {iwiFileExists, "C:\\a\\?.txt", 0, false, ""},
      {iwiFileExists, "C:\\a\\s", 0, false, ""},
      {iwiFileExists, "1.txt", 5, false, ""},
      {iwiFileExists, "C:\\a\\x", 5, false, "***FindFirstFile(1) error 5, path 'C:\\a\\x'\n"},
      {iwiFolderExists, " \"C:\\\\A\\\"", 0, true, "Looking for: 'C:\\A'\nFound directory: 'a'\n"},
      {iwiFolderExists, "C:\\a\\s*", 0, false, "Looking for: 'C:\\a\\s*'\nFound directory: 's'\n"},
      {iwiFolderExists, "C:\\a\\1.txt", 0, false, "Looking for: 'C:\\a\\1.txt'\nFound file: '1.txt'\n"},
      {iwiFolderExists, "C:\\a", 5, false, "Looking for: 'C:\\a'\n***FindFirstFile(3) error 5, path 'C:\\a'\n"},
      {iwiIsFolderEmpty, "C:\\a", 0, false, ""},
      {iwiIsFolderEmpty, "C:\\temp", 0, true, ""},
      {iwiIsFolderEmpty, "C:\\none", 0, true, ""},
      {iwiIsFolderEmpty, "C:\\temp", 5, false, "***FindFirstFile(4) error 5, path 'C:\\temp\\*'\n"},
      {findFile, "C:\\a\\1*", 0, true, "File: '1.txt'\n"},
      {findFile, "C:\\a\\*", 0, false, "Dir: '.'\n"},
      {findFile, "C:\\a\\x", 0, false, "File not found: 'C:\\a\\x'\n"},
      {findFile, "C:\\x\\y\\z", 0, false, "Path not found:: 'C:\\x\\y\\z'\n"},
      {findFile, "C:\\a", 5, false, "FindFirstFile(C:\\a) failed: '5'\n"},
      {extension, "C:\\x\\TEMP", 0, true, "Found extension 'C:\\x\\temporary'\n"},
      {extension, "x", 0, false, "Can't find extension 'x\\dummy*'\n"},
      {extension, "C:\\x", 5, false, "***FindFirstFile(2) error 5, path 'C:\\x*'\nCan't find extension 'C:\\x*'\n"}};
  for (const auto &[check, path, failure, answer, lines] : cases) {
    found.clear();
    Fail(failure != 0 ? "FindFirstFileA" : "", failure);
    EXPECT_EQ(check(path), answer) << path;
    EXPECT_EQ(found, lines[0] == 'F' && answer ? lines.starts_with("File") ? "1.txt" : "temporary" : "");
    EXPECT_EQ(Lines(), lines);
  }
}

TEST_F(FilesTest, OnlyTheReadOnlyAttributeGoes) {
  const std::string path = "C:\\a\\1.txt", quoted = " '" + path + "'";
  world.Attributes(path) = 0x23;
  EXPECT_TRUE(RemoveReadOnly(path, false) && RemoveReadOnly(path, true));
  EXPECT_EQ(Lines(), "Set attributes 0x00000022" + quoted + "\n");
  world.Attributes(path) = 0x21;
  const std::tuple<const char *, DWORD, std::string> failures[] = {
      {"GetFileAttributesA", 2, "RemoveReadOnly: File" + quoted + " not found\n"},
      {"GetFileAttributesA", 3, "RemoveReadOnly: Path" + quoted + " not found\n"},
      {"GetFileAttributesA", 5, "***Error ERROR_ACCESS_DENIED getting attributes" + quoted + "\n"},
      {"SetFileAttributesA", 19, "***Error 19 setting attributes" + quoted + "\n"}};
  for (const auto &[call, code, line] : failures) {
    Fail(call, code);
    EXPECT_FALSE(RemoveReadOnly(path, false));
    EXPECT_FALSE(RemoveReadOnly(path, true));
    EXPECT_EQ(Lines(), line[0] == '*' ? line + line : line);
  }
}

// By code: what each operation logs and returns. "1 " and "0 " are results; "? " a success that is only logged when
// reports are wanted; "! " the same, but a failure then.
TEST_F(FilesTest, EachOutcomeOfADeletion) {
  const std::string file = "C:\\a\\1.txt", folder = "C:\\temp";
  const char missing[] = "! ***Delete path not found:", denied[] = "0 ***Delete path access denied:",
             other[] = "0 ***Delete path error: 19";
  const struct {
    DWORD code;
    std::string file, folder, folderNow, restart;
  } rows[] = {{0, "1 Deleted file:", "1 Deleted path:", "1 Deleted path:", "1 Stacked file for deletion upon reboot:"},
              {2, "? Delete file not found:", missing, "1 Delete path not found:", "? MoveFileEx file not found:"},
              {3, "? Delete file not found:", missing, "1 Delete path not found:", "? MoveFileEx file not found:"},
              {123, "? Invalid name:", "! ***Delete path not valid:", "0 ***Delete path not valid:",
               "? MoveFileEx invalid name:"},
              {145, "", "! ***Delete path not empty:", "1 Delete path not empty:", ""},
              {32, "1 ***Delete file in use:", "", "0 ***Delete path in use:", ""},
              {5, "1 ***Delete file access denied:", denied, denied, ""},
              {19, "0 ***Delete file error: 19", other, other, "0 ***MoveFileEx error: 19"}};
  for (const auto &row : rows) {
    for (const bool report : {false, true}) {
      int error = 0;
      const auto check = [&](const std::string &line, const char *call, const std::string &path, auto operation) {
        if (!line.empty()) {
          world.WriteFile(file, "");
          world.MakeFolder(folder);
          Fail(row.code != 0 ? call : "", row.code);
          const bool silent = !report && (line[0] == '?' || line[0] == '!');
          const bool delayed = line.substr(2).starts_with("***Delete file");
          EXPECT_EQ(operation(), line[0] != '0' && !(line[0] == '!' && report)) << line;
          EXPECT_EQ(error, static_cast<int>(row.code));
          EXPECT_EQ(Lines(), (silent ? "" : line.substr(2) + " '" + path + "'\n") +
                                 (delayed ? "Stacked file for deletion upon reboot: '" + path + "'\n" : ""));
        }
      };
      const DeletionRequest aFile{.execute = true, .path = file, .report = report, .error = &error};
      const DeletionRequest aFolder{.execute = true, .path = folder, .report = report, .error = &error};
      check(row.file, "DeleteFileA", file, [&] { return iwiDeleteFile(aFile); });
      check(row.folder, "RemoveDirectoryA", folder, [&] { return iwiDeleteFolder(aFolder); });
      check(row.restart, "MoveFileExA", file, [&] { return iwiDeleteAtReboot(file, report, &error); });
      error = static_cast<int>(row.code);
      check(row.folderNow, "RemoveDirectoryA", folder, [&] { return iwiRemoveFolderNow(folder); });
    }
  }
}

TEST_F(FilesTest, WhatIsInUseIsDelayedOrTriedTwentyTimes) {
  const std::string file = "C:\\a\\1.txt", inUse = "***Delete file in use: '" + file + "'\n";
  world.held.insert(file);
  Fail("MoveFileExA", 2);
  for (const bool report : {false, true}) {
    EXPECT_TRUE(iwiDeleteFile({.execute = true, .path = file, .report = report}));
    EXPECT_EQ(Lines(), inUse + (report ? "MoveFileEx file not found: '" + file + "'\n" : ""));
  }
  world.held.insert("C:\\temp");
  EXPECT_FALSE(iwiDeleteFolder({.execute = true, .path = "C:\\temp"}));
  EXPECT_EQ(world.callCount["RemoveDirectoryA"], 20);
  EXPECT_EQ(world.slept, 20000u);
  Lines();
  world.onCall = [this](std::string_view) { world.slept > 20000 ? world.held.clear() : void(); };
  EXPECT_TRUE(iwiDeleteFolder({.execute = true, .path = "C:\\temp"}));
  EXPECT_EQ(Lines(),
            "***Delete path in use: 'C:\\temp'\nDelete path in use; waiting: 'C:\\temp'\nDeleted path: 'C:\\temp'\n");
}

TEST_F(FilesTest, TheUserSeesEachDeletionAndItsTicks) {
  world.modes = {MSIRUNMODE_SCHEDULED};
  EXPECT_TRUE(iwiDeleteFile({.execute = true, .path = "C:\\a\\1.txt"}));
  EXPECT_FALSE(iwiDeleteFolder({.execute = true, .path = "C:\\a", .report = true}));
  std::string shown;
  for (const Message &message : world.messages) {
    const bool ticks = message.type == INSTALLMESSAGE_PROGRESS && message.fields == Row{{}, 2, 100000, 0};
    shown += ticks ? "ticks\n" : std::get<std::string>(message.fields.at(1)) + "\n";
  }
  const std::string stamp = "10:25:15 QVCA info (CaProlog): ";
  EXPECT_EQ(shown, "C:\\a\\1.txt\n" + stamp + "Deleted file: 'C:\\a\\1.txt'\nticks\n" +  //
                       "C:\\a\nticks\n" + stamp + "***Delete path not empty: 'C:\\a'\n");
}

TEST_F(FilesTest, TheFlagsDecideBetweenActingCountingAndStacking) {
  const std::vector<Row> &rows = world.tables["RemoveFile"].rows;
  for (const auto &[countOnly, execute] : {std::pair(true, true), {false, false}, {true, false}, {false, true}}) {
    int ticks = 7;
    EXPECT_TRUE(iwiDeleteFile({countOnly, execute, &ticks, "C:\\a\\1.txt", false, nullptr, "comp", 2}));
    EXPECT_TRUE(iwiDeleteFolder({countOnly, execute, &ticks, "C:\\none", false, nullptr, "comp", 2}));
    EXPECT_EQ(ticks, countOnly && execute ? 200007 : 7);
    EXPECT_EQ(world.Exists("C:\\a\\1.txt"), !execute || countOnly);
    EXPECT_EQ(rows.size(), execute && countOnly ? 0u : !countOnly && !execute ? 1u : 3u);
  }
  EXPECT_TRUE(iwiDeleteFile({.path = "C:\\a\\none.txt"}));
  ASSERT_EQ(rows.size(), 3u);  // without execute: the file; then the file and the folder
  EXPECT_EQ(rows[1], (Row{"ZQV_Record_1", "comp", "1.txt", "ZQVPATHPROPERTY0", 2}));
  EXPECT_EQ(rows[2], (Row{"ZQV_Record_2", "comp", {}, "ZQVPATHPROPERTY1", 2}));
  EXPECT_EQ(world.properties["ZQVPATHPROPERTY1"], "C:\\none\\");
  Fail("MsiViewModify", 1627);
  EXPECT_FALSE(iwiDeleteFile({.path = "C:\\a\\3.log"}));
  EXPECT_FALSE(iwiDeleteFolder({.countOnly = true, .path = "C:\\none"}));
  int ticks = 2147483647 - 99999;
  EXPECT_TRUE(iwiDeleteFile({.countOnly = true, .execute = true, .ticks = &ticks, .path = "C:\\x"}));
  EXPECT_EQ(ticks, 2147483647);
}

TEST_F(FilesTest, ATreeGoesFromItsFilesOverItsFoldersToItself) {
  world.Attributes("C:\\a\\s\\1.txt") = FILE_ATTRIBUTE_READONLY;
  int ticks = 0;
  EXPECT_TRUE(DeleteTree("C:\\a\\*.txt", true, true, &ticks));
  EXPECT_EQ(ticks, 800000);
  EXPECT_TRUE(DeleteTree("\"C:\\\\a\\*.txt\" "));  // s and a are not empty, which is no failure
  EXPECT_EQ(Lines(), R"(Deleted file: 'C:\a\2.txt'
Deleted file: 'C:\a\1.txt'
Deleted file: 'C:\a\t\u\1.txt'
Deleted path: 'C:\a\t\u'
Deleted path: 'C:\a\t'
***Delete file access denied: 'C:\a\s\1.txt'
Stacked file for deletion upon reboot: 'C:\a\s\1.txt'
)");
  EXPECT_EQ(world.rebootDeletes, std::vector<std::string>{"C:\\a\\s\\1.txt"});
  EXPECT_TRUE(DeleteTree("C:\\a", false));
  EXPECT_TRUE(iwiDeleteFile({.execute = true, .path = "C:\\a\\*"}));
  EXPECT_EQ(Lines(), "Deleted file: 'C:\\a\\3.log'\n");
  for (const auto &[path, shown] :
       {std::pair("x", "'x', pattern ''"), {" \"\" ", "'', pattern ''"}, {"\\*", "'', pattern '*'"}}) {
    EXPECT_FALSE(DeleteTree(path));
    EXPECT_EQ(Lines(), std::string("***Invalid file pattern; path ") + shown + ", dirs 1, FilePaths 1\n");
  }
}

TEST_F(FilesTest, AWalkThatMeetsAnErrorGoesOn) {
  const std::string files = "Deleted file: 'C:\\a\\2.txt'\nDeleted file: 'C:\\a\\1.txt'\n",
                    below = "Deleted file: 'C:\\a\\t\\u\\1.txt'\nDeleted file: 'C:\\a\\s\\1.txt'\n";
  const std::tuple<DWORD, int, bool, std::string> deletions[] = {
      {3, 2, true, files},
      {5, 2, false, files + "***FindFirstFile(7) error 5, path 'C:\\a\\*'\n"},
      {5, 1, true, ""},  // what may not be searched is passed over with all below
      {21, 1, false, "***FindFirstFile(6) error 21, path 'C:\\a\\?.txt'\n" + below}};
  for (const auto &[code, nth, result, lines] : deletions) {
    world.WriteFile("C:\\a\\1.txt", "");
    world.WriteFile("C:\\a\\2.txt", "");
    Fail("FindFirstFileA", code, nth);
    EXPECT_EQ(DeleteTree("C:\\a\\?.txt", true, false), result);
    EXPECT_EQ(Lines(), lines);
  }
  const std::tuple<const char *, DWORD, int, UINT, const char *> copies[] = {
      {"CopyFileExA", 5, 1, 1603u, "***Error ERROR_ACCESS_DENIED copying '1.txt'\n"},
      {"CopyFileExA", 1223, 2, 1603u, "***Error ERROR_CANCELLED copying '2.txt'\n"},
      {"FindFirstFileA", 5, 1, 1603u, "***FindFirstFile(8) error 5, path 'C:\\a\\*'\n"},
      {"FindFirstFileA", 3, 1, 0u, "to 'C:\\n\\'\nCreated 'C:\\n'\nCopying pattern"},
      {"FindFirstFileA", 21, 2, 1603u, "***FindFirstFile(9) error 21, path 'C:\\a\\*'\n"},
      {"CreateDirectoryA", 112, 1, 1603u, "***Error 112 creating 'C:\\n'\n"}};
  for (const auto &[call, code, nth, result, line] : copies) {
    world.Remove("C:\\n");
    Fail(call, code, nth);
    EXPECT_EQ(iwiCopyPattern("C:\\a", "C:\\n", "*", true), result) << line;
    EXPECT_NE(Lines().find(line), std::string::npos) << line;
    EXPECT_EQ(world.Exists("C:\\n\\3.log"), nth == 2 || std::string_view(call) == "CopyFileExA");
  }
  for (const bool recurse : {false, true}) {  // the search itself breaks off
    Fail("FindNextFileA", 1117, recurse ? 7 : 1);
    EXPECT_EQ(iwiCopyPattern("C:\\a", "C:\\n", "*", recurse), 1603u);
    EXPECT_EQ(world.failedCall, "FindNextFileA");
    Fail("FindNextFileA", 1117, recurse ? 7 : 1);
    EXPECT_FALSE(DeleteTree("C:\\a\\*", true, false));
  }
  world.failCall = {};
  world.onCall = [this](std::string_view call) {  // the others vanish as the first one goes
    if (call == "DeleteFileA" && world.Exists("C:\\a\\t")) {
      world.Remove("C:\\a\\t");
      world.Remove("C:\\a\\1.txt");
    }
  };
  EXPECT_TRUE(DeleteTree("C:\\a\\*"));
  EXPECT_FALSE(world.Exists("C:\\a"));
}

TEST_F(FilesTest, ATreeCannotLeadTheWalkOutOfIt) {
  world.WriteFile("C:\\keep\\1.txt", "");
  world.MakeJunction("C:\\a\\link", "C:\\keep");
  world.MakeJunction("C:\\link", "C:\\keep");
  World::codePage = 932;
  Node &odd = world.MakeFolder("C:\\a\\t");
  const std::string names[] = {".. ",   "..\\keep", " .", "...", "x\\y", "?", "\x83", "*", "..\\..\\keep\\1.txt",
                               "1.txt."};
  for (const std::string &name : names) {
    const DWORD attributes = name == "*" || name.find("1.txt") != std::string::npos ? 0 : FILE_ATTRIBUTE_DIRECTORY;
    (name == "*" ? world.MakeFolder("C:\\a\\s") : odd).entries[name] = std::make_shared<Node>(Node{attributes});
  }
  // A copy tells of each, and tries those that no other file can be taken for.
  EXPECT_EQ(iwiCopyPattern("C:\\a", "C:\\n", "*", true), 1603u);
  EXPECT_EQ(world.callCount["CopyFileExA"], 6);
  EXPECT_FALSE(world.Exists("C:\\n\\keep") || world.Exists("C:\\n\\t\\1.txt"));
  for (const std::string &name : names) {
    ExpectInLog({"***Error 123 copying '" + name + "'\n"});
  }
  EXPECT_TRUE(DeleteTree("C:\\a\\*"));
  EXPECT_TRUE(DeleteTree("C:\\link\\*"));
  EXPECT_TRUE(world.Exists("C:\\keep\\1.txt"));
  EXPECT_FALSE(world.Exists("C:\\a\\link") || world.Exists("C:\\link") || world.Exists("C:\\a\\s\\1.txt"));
  EXPECT_TRUE(world.Exists("C:\\a\\t"));  // what cannot be named stays
  world.MakeJunction("C:\\link", "C:\\keep");
  EXPECT_TRUE(DeleteTree("C:\\link\\*", true, false));  // here the link is only where the files are
  EXPECT_FALSE(world.Exists("C:\\keep\\1.txt"));
}

/// Another user puts a link to C:\keep in a folder's place, unless a handle that is open forbids it: each folder, at
/// each call for a file.
TEST_F(FilesTest, NobodyCanSwapALinkInUnderAWalk) {
  const auto write = [this](const std::string &root) {
    for (const char *file : {"\\1.txt", "\\2.txt", "\\s\\1.txt", "\\t\\1.txt", "\\t\\u\\1.txt"}) {
      world.WriteFile(root + file, root);
    }
  };
  const std::pair<UINT (*)(), std::vector<const char *>> walks[] = {
      {[] { return iwiCopyPattern("C:\\a", "C:\\n", "*", true); },
       {"C:\\a\\s", "C:\\a\\t", "C:\\a\\t\\u", "C:\\n\\s", "C:\\n\\t", "C:\\n\\t\\u"}},
      {[] { return UINT{DeleteTree("C:\\a\\*", true, false)}; }, {"C:\\a\\s", "C:\\a\\t", "C:\\a\\t\\u"}},
      {[] { return UINT{DeleteTree("C:\\a\\*")}; }, {"C:\\a", "C:\\a\\s", "C:\\a\\t", "C:\\a\\t\\u"}}};
  for (const auto &[walk, folders] : walks) {
    for (const char *folder : folders) {
      bool ended = false;
      for (int nth = 1; !ended; ++nth) {
        *world.root->entries["C:"] = {.attributes = FILE_ATTRIBUTE_DIRECTORY};
        world.MakeFolder("C:\\temp");
        write("C:\\a");
        write("C:\\keep");
        const std::string kept = Contents(*world.Find("C:\\keep").node);
        int left = nth;
        world.onCall = [&](std::string_view call) {
          left -= call.starts_with("Msi") ? 0 : 1;
          if (left == 0 && world.Exists(folder) && world.Move(folder, "C:\\aside")) {
            world.MakeJunction(folder, "C:\\keep");
          }
        };
        walk();
        world.onCall = nullptr;
        ended = left > 0;
        ASSERT_EQ(Contents(*world.Find("C:\\keep").node), kept) << folder << " at " << nth;
        world.Remove("C:\\keep");
        ASSERT_EQ(Contents(*world.Find("C:").node).find("C:\\keep"), std::string::npos)
            << folder << " copied at " << nth;
      }
    }
  }
}

TEST_F(FilesTest, WhatIsInAFolderThatCannotBeHeldIsNotTouched) {
  const char deleted[] = "Deleted file: 'C:\\a\\1.txt'\nDeleted file: 'C:\\a\\s\\1.txt'\n";
  const std::tuple<bool, int, DWORD, UINT, const char *> cases[] = {
      {true, 2, 32, FALSE,
       "***FindFirstFile(6) error 32, path 'C:\\a\\t\\*'\n***FindFirstFile(7) error 32, path 'C:\\a\\t\\*'"},
      {true, 2, 5, TRUE, deleted},
      {true, 2, 2, TRUE, deleted},
      {false, 1, 32, 1603,
       "Created 'C:\\n'\n***FindFirstFile(8) error 32, path 'C:\\a\\*'\n***FindFirstFile(9) error 32"},
      {false, 2, 5, 1603, "***Error ERROR_ACCESS_DENIED copying '1.txt'\n"},
      {false, 2, 5, 1603, "to 'C:\\n\\t\\u\\'\n***Error ERROR_ACCESS_DENIED creating 'C:\\n\\t\\u'\nCopying '1.txt'"},
      {false, 2, 2, 1603, "***Error 3 copying '1.txt'\n"}};
  for (const char *call : {"CreateFileA", "GetFileInformationByHandle"}) {
    for (const auto &[deletes, nth, code, result, line] : cases) {
      world.WriteFile("C:\\a\\1.txt", "");
      world.WriteFile("C:\\a\\s\\1.txt", "");
      world.Remove("C:\\n");
      Fail(call, code, nth);
      const UINT got = deletes ? DeleteTree("C:\\a\\*", true, false) : iwiCopyPattern("C:\\a", "C:\\n", "*", true);
      EXPECT_EQ(got, result) << line;
      const std::string log = Lines();
      EXPECT_NE(log.find(line), std::string::npos) << line << log;
      EXPECT_TRUE(world.Exists("C:\\a\\t\\u\\1.txt"));
      EXPECT_TRUE(deletes || world.Find("C:\\n").node->entries.empty()) << line;
    }
  }
}

TEST_F(FilesTest, OnlyTheNamedFoldersOfACopyMayBeLinks) {
  world.WriteFile("C:\\keep\\1.txt", "kept");
  world.MakeJunction("C:\\n\\t", "C:\\keep");
  EXPECT_EQ(iwiCopyPattern("C:\\a", "C:\\n", "1.*", true), 1603u);
  EXPECT_TRUE(
      Lines().ends_with("***Error 448 creating 'C:\\n\\t\\u'\nCopying '1.txt' from 'C:\\a\\t\\u\\' to "
                        "'C:\\n\\t\\u\\'\n***Error 448 copying '1.txt'\n"));
  EXPECT_EQ(Contents(*world.Find("C:\\keep").node), "1.txt 32 'kept' {}\n");
  world.MakeJunction("C:\\from", "C:\\a");
  world.MakeJunction("C:\\to", "C:\\keep");
  EXPECT_EQ(iwiCopyPattern("C:\\from", "C:\\to", "*", true), 0u);
  EXPECT_EQ(world.ReadFile("C:\\keep\\t\\u\\1.txt"), "C:\\a\\t\\u\\1.txt");
}

TEST_F(FilesTest, WhatNoPathCanReachIsAnErrorAndNoQuietSuccess) {
  std::string deep = "C:\\deep";
  for (int depth = 0; depth < 20; ++depth) {
    deep += "\\" + std::string(20, 'd');
  }
  world.MakeFolder(deep);
  EXPECT_FALSE(DeleteTree("C:\\deep\\*"));
  EXPECT_NE(Lines().find("***FindFirstFile(6) error 206, path 'C:\\deep\\d"), std::string::npos);
  EXPECT_EQ(iwiCopyPattern("C:\\deep", "C:\\copy", "*", true), 1603u);
  for (const std::size_t length : {259u, 260u, 1000u}) {
    const std::string path = "C:\\a\\" + std::string(length - 5, 'x'), quoted = " '" + path + "'\n";
    Lines();
    EXPECT_EQ(iwiDeleteFile({.execute = true, .path = path}), length < 260);
    EXPECT_EQ(Lines(), length < 260 ? "" : "***Delete file error: 206" + quoted + "***MoveFileEx error: 206" + quoted);
    EXPECT_EQ(iwiCopyFile(true, path, "C:\\x", ""), 1603u);
  }
}

TEST_F(FilesTest, ATreeIsCopiedWithItsFolders) {
  world.MakeJunction("C:\\a\\link", "C:\\temp");
  world.Attributes("C:\\a\\1.txt") = 0x21;
  world.WriteFile("C:\\n\\2.txt", "old").attributes = 0x21;
  EXPECT_EQ(iwiCopyPattern("C:\\a\\", "C:\\n", "*.txt", true), 0u);
  const std::string log = Lines();
  EXPECT_TRUE(log.starts_with(R"(Copying pattern '*.txt' from tree 'C:\a\\' to 'C:\n\'
Copying '1.txt' from 'C:\a\' to 'C:\n\'
Property 'ZQVTEMP' value 'C:\temp' from property table
Set attributes 0x00000020 'C:\n\1.txt'
Copying '2.txt' from 'C:\a\' to 'C:\n\'
Set attributes 0x00000020 'C:\n\2.txt'
Copying pattern '*.txt' from tree 'C:\a\s\' to 'C:\n\s\'
Created 'C:\n\s'
)")) << log;
  EXPECT_TRUE(log.ends_with("Created 'C:\\n\\t\\u'\nCopying '1.txt' from 'C:\\a\\t\\u\\' to 'C:\\n\\t\\u\\'\n")) << log;
  EXPECT_EQ(world.ReadFile("C:\\n\\2.txt"), "C:\\a\\2.txt");
}

TEST_F(FilesTest, WhatIsNotThereIsCopiedOnlyWhereItMust) {
  EXPECT_EQ(iwiCopyFile(false, "C:\\a\\none", "C:\\n\\x", ""), 0u);
  EXPECT_EQ(iwiCopyFile(true, "C:\\a\\none", "C:\\n\\x", ""), 1603u);
  EXPECT_EQ(Lines(),
            "Copying from 'C:\\a\\none' to 'C:\\n\\x'\nCopy bypassed; source file 'C:\\a\\none' does not exist\n"
            "Copying from 'C:\\a\\none' to 'C:\\n\\x'\nProperty 'ZQVTEMP' value 'C:\\temp' from property table\n"
            "***Error 2 copying 'C:\\a\\none'\n");
  Fail("GetFileAttributesA", 2);  // of the target, before and after
  EXPECT_EQ(iwiCopyFile(true, "C:\\a\\1.txt", "C:\\x", ""), 0u);
  EXPECT_EQ(Lines(), "Copying from 'C:\\a\\1.txt' to 'C:\\x'\nRemoveReadOnly: File 'C:\\x' not found\n");
}

TEST_F(FilesTest, TheMarkerCancelsCopyingForGood) {
  const std::string marker = "C:\\temp\\zqvcancl.txt";
  const auto copy = [] { return iwiCopyPattern("C:\\a", "C:\\n", "*", true); };
  for (const char *folder : {"", "C:\\temp\\"}) {
    world.properties["ZQVTEMP"] = folder;
    EXPECT_FALSE(iwiIsCopyCancelled());
  }
  world.onCall = [&](std::string_view call) {
    if (call == "CopyFileExA") {
      world.WriteFile(marker, "");
    }
  };
  Fail("CopyFileExA", 5, 1);
  EXPECT_EQ(copy(), 1602u) << "of several failures the last";
  EXPECT_EQ(iwiCopyFile(false, "C:\\a\\none", "C:\\n\\x", ""), 0u) << "what is not there cannot be cancelled";
  world.Remove(marker);
  EXPECT_EQ(iwiCopyFile(false, "C:\\a", "C:\\n", "1.txt") + copy(), 2 * 1602u);
  copyCancelled = FALSE;
  world.WriteFile("C:\\temp\\ZQVCANCL.TXT", "");
  EXPECT_EQ(copy(), 1602u);
  EXPECT_EQ(world.callCount["CopyFileExA"], 1) << "none is begun behind the marker";
  world.Remove(marker);
  copyCancelled = FALSE;
  world.MakeFolder(marker);
  EXPECT_FALSE(iwiIsCopyCancelled());
  Reload();
  world.properties["ZQVTEMP"] = std::string(260, 'x');
  EXPECT_TRUE(iwiIsCopyCancelled());
}

TEST_F(FilesTest, TheTargetOfACopyIsMadeFromItsRoot) {
  world.MakeFolder("\\\\server\\share");
  for (const char *path : {"C:\\p\\q\\", "\\\\server\\share\\r", "\\x", "C:\\", "C:", "\\\\server", "name", ""}) {
    CreateTargetFolder(path);
  }
  EXPECT_EQ(Lines(),
            "Created 'C:\\p'\nCreated 'C:\\p\\q'\n***Error ERROR_ACCESS_DENIED creating '\\\\server\\share'\n"
            "Created '\\\\server\\share\\r'\nCreated '\\x'\n");
  EXPECT_EQ(iwiCopyPattern("C:\\a", "C:\\", "1.*", false) + iwiCopyPattern("C:", "C:\\temp", "1.*", false), 0u);
  EXPECT_EQ(iwiDeleteFile({.execute = true, .path = "C:\\1.*"}), 1);
  EXPECT_TRUE(world.Exists("C:\\temp\\1.txt") && !world.Exists("C:\\1.txt"));
  Lines();
  Fail("CreateDirectoryA", 5);
  EXPECT_TRUE(iwiCreateFolderTree("C:\\y\\z"));
  EXPECT_EQ(Lines(), "Couldn't create 'C:\\y' 5\n");
}

}  // namespace
