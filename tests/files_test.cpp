#include <filesystem>
#include <fstream>

#include "services/attributes.h"
#include "services/copy.h"
#include "services/create.h"
#include "services/delete.h"
#include "services/existence.h"
#include "support.h"

namespace {

namespace fs = std::filesystem;

class FilesTest : public LibraryTest {
 protected:
  FilesTest() {
    world.tables["RemoveFile"].columns = {"FileKey", "Component_", "FileName", "DirProperty", "InstallMode"};
    for (const char *file : {"C:\\a\\1.txt", "C:\\a\\2.txt", "C:\\a\\3.log", "C:\\a\\s\\1.txt", "C:\\a\\t\\u\\1.txt"}) {
      world.WriteFile(file, file);
    }
  }

  std::string Lines() { return TakeLog("(CaProlog)"); }

  void Fail(const char *call, DWORD code, int nth = 0) {
    world.callCount.clear();
    world.failCall = {code == 0 ? "" : call, nth, code};
  }

  static int DeleteTree(const char *path, bool files = true, bool removeFolders = true, int *count = nullptr) {
    return iwiDeletePattern(count != nullptr, true, count, path, files, removeFolders, true, "", 0);
  }
};

TEST_F(FilesTest, Existence) {
  const auto findFile = [](const std::string &path) {
    std::string name;
    const int found = iwiFindFile(path, &name);
    return found == (name == "1.txt") ? found : -1;
  };
  const auto extension = [](const std::string &path) {
    std::string name;
    const int found = iwiFindExtension(path, name);
    return found == (name == "temporary") ? found : -1;
  };
  world.WriteFile("C:\\x\\tempo", "");
  world.MakeFolder("C:\\x\\temporary");
  const std::tuple<int (*)(const std::string &), std::string, DWORD, int, std::string> cases[] = {
      {iwiFileExists, "C:\\A\\1.TXT", 0, 1, ""},
      {iwiFileExists, "C:\\a\\?.txt", 0, 0, ""},
      {iwiFileExists, "C:\\a\\s", 0, 0, ""},
      {iwiFileExists, "1.txt", 5, 0, ""},
      {iwiFileExists, "C:\\a\\x", 5, 0, "***FindFirstFile(1) error 5, path 'C:\\a\\x'\n"},
      {iwiFolderExists, " \"C:\\\\A\\\"", 0, 1, "Looking for: 'C:\\A'\nFound directory: 'a'\n"},
      {iwiFolderExists, "C:\\a\\s*", 0, 0, "Looking for: 'C:\\a\\s*'\nFound directory: 's'\n"},
      {iwiFolderExists, "C:\\a\\1.txt", 0, 0, "Looking for: 'C:\\a\\1.txt'\nFound file: '1.txt'\n"},
      {iwiFolderExists, "C:\\a", 5, 0, "Looking for: 'C:\\a'\n***FindFirstFile(3) error 5, path 'C:\\a'\n"},
      {iwiIsFolderEmpty, "C:\\a", 0, 0, ""},
      {iwiIsFolderEmpty, "C:\\temp", 0, 1, ""},
      {iwiIsFolderEmpty, "C:\\none", 0, 1, ""},
      {iwiIsFolderEmpty, "C:\\temp", 5, 0, "***FindFirstFile(4) error 5, path 'C:\\temp\\*'\n"},
      {findFile, "C:\\a\\1*", 0, 1, "File: '1.txt'\n"},
      {findFile, "C:\\a\\*", 0, 0, "Dir: '.'\n"},
      {findFile, "C:\\a\\x", 0, 0, "File not found: 'C:\\a\\x'\n"},
      {findFile, "C:\\x\\y\\z", 0, 0, "Path not found:: 'C:\\x\\y\\z'\n"},
      {findFile, "C:\\a", 5, 0, "FindFirstFile(C:\\a) failed: '5'\n"},
      {extension, "C:\\x\\TEMP", 0, 1, "Found extension 'C:\\x\\temporary'\n"},
      {extension, "x", 0, 0, "Can't find extension 'x\\dummy*'\n"},
      {extension, "C:\\x", 5, 0, "***FindFirstFile(2) error 5, path 'C:\\x*'\nCan't find extension 'C:\\x*'\n"},
  };
  for (const auto &[test, path, failure, answer, lines] : cases) {
    Fail("FindFirstFileA", failure);
    EXPECT_EQ(test(path), answer) << path;
    EXPECT_EQ(Lines(), lines);
  }
}

TEST_F(FilesTest, OnlyTheReadOnlyAttributeGoes) {
  const std::string path = "C:\\a\\1.txt", quoted = " '" + path + "'";
  world.attributes[path] = 0x23;
  EXPECT_EQ(RemoveReadOnly(path, false) + RemoveReadOnly(path, true), 0u);
  EXPECT_EQ(Lines(), "Set attributes 0x00000022" + quoted + "\n");
  world.attributes[path] = 0x21;
  const std::tuple<const char *, DWORD, std::string> failures[] = {
      {"GetFileAttributesA", 2, "RemoveReadOnly: File" + quoted + " not found\n"},
      {"GetFileAttributesA", 3, "RemoveReadOnly: Path" + quoted + " not found\n"},
      {"GetFileAttributesA", 5, "***Error ERROR_ACCESS_DENIED getting attributes" + quoted + "\n"},
      {"SetFileAttributesA", 19, "***Error 19 setting attributes" + quoted + "\n"}};
  for (const auto &[call, code, line] : failures) {
    for (const bool report : {false, true}) {
      Fail(call, code);
      EXPECT_EQ(RemoveReadOnly(path, report), 1603u);
      EXPECT_EQ(Lines(), report || line[0] == '*' ? line : "");
    }
  }
}

// By code: what each operation logs and returns. "1 " and "0 " are results; "? " a success that is only logged when
// reports are wanted; "! " the same, but a failure then.
TEST_F(FilesTest, EachOutcomeOfADeletion) {
  const std::string file = "C:\\a\\1.txt", folder = "C:\\temp";
  const std::string notFound = "! ***Delete path not found:", invalid = "0 ***Delete path not valid:",
                    denied = "0 ***Delete path access denied:", other = "0 ***Delete path error: 19";
  const struct {
    DWORD code;
    std::string file, folder, folderNow, restart;
  } rows[] = {
      {0, "1 Deleted file:", "1 Deleted path:", "1 Deleted path:", "1 Stacked file for deletion upon reboot:"},
      {2, "? Delete file not found:", notFound, "1 Delete path not found:", "? MoveFileEx file not found:"},
      {3, "? Delete file not found:", notFound, "1 Delete path not found:", "? MoveFileEx file not found:"},
      {123, "? Invalid name:", "! ***Delete path not valid:", invalid, "? MoveFileEx invalid name:"},
      {145, "", "! ***Delete path not empty:", "1 Delete path not empty:", ""},
      {32, "1 ***Delete file in use:", "", "0 ***Delete path in use:", ""},
      {5, "1 ***Delete file access denied:", denied, denied, ""},
      {19, "0 ***Delete file error: 19", other, other, "0 ***MoveFileEx error: 19"},
  };
  for (const auto &row : rows) {
    for (const bool report : {false, true}) {
      int error = 0;
      const auto check = [&](std::string line, const char *call, const std::string &path, auto operation) {
        if (line.empty()) {
          return;
        }
        world.WriteFile(file, "");
        world.MakeFolder(folder);
        Fail(call, row.code);
        EXPECT_EQ(operation(), line[0] == '0' || (line[0] == '!' && report) ? 0 : 1) << line;
        EXPECT_EQ(error, static_cast<int>(row.code));
        const bool silent = !report && (line[0] == '?' || line[0] == '!');
        line = silent ? "" : line.substr(2) + " '" + path + "'\n";
        const bool delayed = line.starts_with("***Delete file");
        EXPECT_EQ(Lines(), line + (delayed ? "Stacked file for deletion upon reboot: '" + path + "'\n" : ""));
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

TEST_F(FilesTest, AFolderInUseIsTriedTwentyTimes) {
  world.held.insert("C:\\temp");
  EXPECT_EQ(iwiDeleteFolder({.execute = true, .path = "C:\\temp"}), 0);
  EXPECT_EQ(world.callCount["RemoveDirectoryA"], 20);
  EXPECT_EQ(world.slept, 20000u);
  Lines();
  world.onSleep = [this](DWORD) { world.held.clear(); };
  EXPECT_EQ(iwiDeleteFolder({.execute = true, .path = "C:\\temp"}), 1);
  EXPECT_EQ(Lines(),
            "***Delete path in use: 'C:\\temp'\nDelete path in use; waiting: 'C:\\temp'\nDeleted path: 'C:\\temp'\n");
}

TEST_F(FilesTest, TheUserSeesEachDeletionAndItsTicks) {
  world.modes = {MSIRUNMODE_SCHEDULED};
  iwiDeleteFile({.execute = true, .path = "C:\\a\\1.txt"});
  iwiDeleteFolder({.execute = true, .path = "C:\\a", .report = true});
  std::string shown;
  for (const Message &message : world.messages) {
    const bool ticks = message.type == INSTALLMESSAGE_PROGRESS && message.fields == Row{{}, 2, 100000, 0};
    shown += ticks ? "ticks" : std::get<std::string>(message.fields.at(1));
    shown += '\n';
  }
  const std::string stamp = "10:25:15 QVCA info (CaProlog): ";
  EXPECT_EQ(shown, "C:\\a\\1.txt\n" + stamp + "Deleted file: 'C:\\a\\1.txt'\nticks\n" +  //
                       "C:\\a\nticks\n" + stamp + "***Delete path not empty: 'C:\\a'\n");
}

TEST_F(FilesTest, TheFlagsDecideBetweenActingCountingAndStacking) {
  const std::vector<Row> &rows = world.temporaryRows["RemoveFile"];
  for (const auto &[countOnly, execute] : {std::pair(true, true), {false, false}, {true, false}, {false, true}}) {
    int ticks = 7;
    EXPECT_EQ(iwiDeleteFile({countOnly, execute, &ticks, "C:\\a\\1.txt", false, nullptr, "comp", 2}), 1);
    EXPECT_EQ(iwiDeleteFolder({countOnly, execute, &ticks, "C:\\none", false, nullptr, "comp", 2}), 1);
    EXPECT_EQ(ticks, countOnly && execute ? 200007 : 7);
    EXPECT_EQ(world.Exists("C:\\a\\1.txt"), !execute || countOnly);
    EXPECT_EQ(rows.size(), execute && countOnly ? 0u : !countOnly && !execute ? 1u : 3u);
  }
  ASSERT_EQ(rows.size(), 3u);  // without execute: the file; then the file and the folder
  EXPECT_EQ(rows[1], (Row{"ZQV_Record_1", "comp", "1.txt", "ZQVPATHPROPERTY0", 2}));
  EXPECT_EQ(rows[2], (Row{"ZQV_Record_2", "comp", {}, "ZQVPATHPROPERTY1", 2}));
  EXPECT_EQ(world.properties["ZQVPATHPROPERTY1"], "C:\\none\\");
  EXPECT_EQ(iwiDeleteFile({.path = "C:\\a\\none.txt"}), 1);
  EXPECT_EQ(rows.size(), 3u);
  Fail("MsiViewModify", 1627);
  EXPECT_EQ(iwiDeleteFile({.path = "C:\\a\\3.log"}), 0);
  EXPECT_EQ(iwiDeleteFolder({.countOnly = true, .path = "C:\\none"}), 0);
  int ticks = 2147483647 - 99999;
  iwiDeleteFile({.countOnly = true, .execute = true, .ticks = &ticks, .path = "C:\\x"});
  EXPECT_EQ(ticks, 2147483647);
}

TEST_F(FilesTest, ATreeGoesFromItsFilesOverItsFoldersToItself) {
  world.attributes["C:\\a\\s\\1.txt"] = FILE_ATTRIBUTE_READONLY;
  int ticks = 0;
  EXPECT_EQ(DeleteTree("C:\\a\\*.txt", true, true, &ticks), 1);
  EXPECT_EQ(ticks, 800000);
  EXPECT_EQ(DeleteTree("\"C:\\\\a\\*.txt\" "), 1);  // s and a are not empty, which is no failure
  EXPECT_EQ(Lines(),
            "Deleted file: 'C:\\a\\2.txt'\nDeleted file: 'C:\\a\\1.txt'\n"
            "Deleted file: 'C:\\a\\t\\u\\1.txt'\nDeleted path: 'C:\\a\\t\\u'\nDeleted path: 'C:\\a\\t'\n"
            "***Delete file access denied: 'C:\\a\\s\\1.txt'\n"
            "Stacked file for deletion upon reboot: 'C:\\a\\s\\1.txt'\n");
  EXPECT_EQ(DeleteTree("C:\\a", false), 1);
  EXPECT_EQ(iwiDeleteFile({.execute = true, .path = "C:\\a\\*"}), 1);
  EXPECT_EQ(Lines(), "Deleted file: 'C:\\a\\3.log'\n");
}

TEST_F(FilesTest, AWalkThatMeetsAnErrorGoesOn) {
  const std::string files = "Deleted file: 'C:\\a\\2.txt'\nDeleted file: 'C:\\a\\1.txt'\n";
  const std::string below = "Deleted file: 'C:\\a\\t\\u\\1.txt'\nDeleted file: 'C:\\a\\s\\1.txt'\n";
  const std::tuple<DWORD, int, int, std::string> cases[] = {
      {123, 2, 1, files},
      {5, 2, 0, files + "***FindFirstFile(7) error 5, path 'C:\\a\\*'\n"},
      {5, 1, 1, ""},  // what may not be searched is passed over with all below
      {21, 1, 0, "***FindFirstFile(6) error 21, path 'C:\\a\\?.txt'\n" + below}};
  for (const auto &[code, nth, result, lines] : cases) {
    world.WriteFile("C:\\a\\1.txt", "");
    world.WriteFile("C:\\a\\2.txt", "");
    Fail("FindFirstFileA", code, nth);
    EXPECT_EQ(DeleteTree("C:\\a\\?.txt", true, false), result);
    EXPECT_EQ(Lines(), lines);
  }
  Fail("", 0);
  world.onCall = [this](std::string_view call) {  // the others vanish as the first one goes
    if (call == "DeleteFileA") {
      world.onCall = nullptr;
      fs::remove_all(world.HostPath("C:\\a\\t"));
      fs::remove(world.HostPath("C:\\a\\1.txt"));
    }
  };
  EXPECT_EQ(DeleteTree("C:\\a\\*"), 1);
  EXPECT_FALSE(world.Exists("C:\\a"));
}

TEST_F(FilesTest, APathThatNamesNoFolderDeletesNothing) {
  const std::pair<const char *, const char *> cases[] = {
      {"x", "'x', pattern ''"}, {" \"\" ", "'', pattern ''"}, {"\\*", "'', pattern '*'"}};
  for (const auto &[path, shown] : cases) {
    EXPECT_EQ(DeleteTree(path), 0);
    EXPECT_EQ(Lines(), std::string("***Invalid file pattern; path ") + shown + ", dirs 1, FilePaths 1\n");
  }
}

TEST_F(FilesTest, ATreeCannotLeadTheWalkOutOfIt) {
  world.WriteFile("C:\\keep\\1.txt", "");
  world.MakeJunction("C:\\a\\link", "C:\\keep");
  world.MakeJunction("C:\\link", "C:\\keep");
  const std::string host = world.HostPath("C:\\a\\t");
  for (const char *name : {".. ", "..\\keep", " .", "...", "x\\y"}) {
    fs::create_directory(host + "/" + name);
  }
  for (const char *name : {"../s/*", "..\\..\\keep\\1.txt", "1.txt."}) {
    std::ofstream(host + "/" + name) << "x";
  }
  EXPECT_EQ(DeleteTree("C:\\a\\*"), 1);
  EXPECT_EQ(DeleteTree("C:\\link\\*"), 1);
  EXPECT_TRUE(world.Exists("C:\\keep\\1.txt"));
  EXPECT_FALSE(world.Exists("C:\\a\\link") || world.Exists("C:\\link") || world.Exists("C:\\a\\s\\1.txt"));
  EXPECT_TRUE(world.Exists("C:\\a\\t"));  // what cannot be named stays
  world.MakeJunction("C:\\link", "C:\\keep");
  EXPECT_EQ(DeleteTree("C:\\link\\*", true, false), 1);  // here the link is only where the files are
  EXPECT_FALSE(world.Exists("C:\\keep\\1.txt"));
}

TEST_F(FilesTest, WhatNoPathCanReachIsAnErrorAndNoQuietSuccess) {
  std::string deep = world.HostPath("C:\\deep");
  for (int depth = 0; depth < 20; ++depth) {
    deep += "/" + std::string(20, 'd');
  }
  fs::create_directories(deep);
  EXPECT_EQ(DeleteTree("C:\\deep\\*"), 0);
  EXPECT_NE(Lines().find("***FindFirstFile(6) error 206, path 'C:\\deep\\d"), std::string::npos);
  EXPECT_EQ(iwiCopyPattern("C:\\deep", "C:\\copy", "*", true), 1603u);
  for (const std::size_t length : {259u, 260u, 1000u}) {
    const std::string path = "C:\\a\\" + std::string(length - 5, 'x'), quoted = " '" + path + "'\n";
    Lines();
    EXPECT_EQ(iwiDeleteFile({.execute = true, .path = path}), length < 260 ? 1 : 0);
    EXPECT_EQ(Lines(), length < 260 ? "" : "***Delete file error: 206" + quoted + "***MoveFileEx error: 206" + quoted);
    EXPECT_EQ(iwiCopyFile(true, path, "C:\\x", ""), 1603u);
  }
}

TEST_F(FilesTest, ATreeIsCopiedWithItsFolders) {
  world.MakeJunction("C:\\a\\link", "C:\\temp");
  world.attributes["C:\\a\\1.txt"] = 0x21;
  world.WriteFile("C:\\n\\2.txt", "old");
  world.attributes["C:\\n\\2.txt"] = 0x21;
  EXPECT_EQ(iwiCopyPattern("C:\\a\\", "C:\\n", "*.txt", true), 0u);
  EXPECT_EQ(Lines(),
            "Copying pattern '*.txt' from tree 'C:\\a\\\\' to 'C:\\n\\'\n"
            "Copying '1.txt' from 'C:\\a\\' to 'C:\\n\\'\n"
            "Property 'ZQVTEMP' value 'C:\\temp' from property table\n"
            "Set attributes 0x00000020 'C:\\n\\1.txt'\n"
            "Copying '2.txt' from 'C:\\a\\' to 'C:\\n\\'\n"
            "Set attributes 0x00000020 'C:\\n\\2.txt'\n"
            "Copying pattern '*.txt' from tree 'C:\\a\\s\\' to 'C:\\n\\s\\'\nCreated 'C:\\n\\s'\n"
            "Copying '1.txt' from 'C:\\a\\s\\' to 'C:\\n\\s\\'\n"
            "Copying pattern '*.txt' from tree 'C:\\a\\t\\' to 'C:\\n\\t\\'\nCreated 'C:\\n\\t'\n"
            "Copying pattern '*.txt' from tree 'C:\\a\\t\\u\\' to 'C:\\n\\t\\u\\'\nCreated 'C:\\n\\t\\u'\n"
            "Copying '1.txt' from 'C:\\a\\t\\u\\' to 'C:\\n\\t\\u\\'\n");
  EXPECT_EQ(world.ReadFile("C:\\n\\2.txt"), "C:\\a\\2.txt");
}

TEST_F(FilesTest, FailuresOfACopyAreKeptAndDoNotStopIt) {
  const std::tuple<const char *, DWORD, int, UINT, const char *> cases[] = {
      {"CopyFileExA", 5, 1, 1603u, "***Error ERROR_ACCESS_DENIED copying '1.txt'\n"},
      {"CopyFileExA", 1223, 2, 1603u, "***Error ERROR_CANCELLED copying '2.txt'\n"},
      {"CopyFileExA", 112, 1, 1603u, "***Error 112 copying '1.txt'\n"},
      {"FindFirstFileA", 5, 1, 1603u, "***FindFirstFile(8) error 5, path 'C:\\a\\*'\n"},
      {"FindFirstFileA", 3, 1, 0u, "to 'C:\\n\\'\nCreated 'C:\\n'\nCopying pattern"},
      {"FindFirstFileA", 21, 5, 1603u, "***FindFirstFile(9) error 21, path 'C:\\a\\*'\n"},
      {"CreateDirectoryA", 5, 1, 1603u, "***Error ERROR_ACCESS_DENIED creating 'C:\\n'\n"},
      {"CreateDirectoryA", 112, 1, 1603u, "***Error 112 creating 'C:\\n'\n"}};
  for (const auto &[call, code, nth, result, line] : cases) {
    fs::remove_all(world.HostPath("C:\\n"));
    Fail(call, code, nth);
    EXPECT_EQ(iwiCopyPattern("C:\\a", "C:\\n", "*", true), result) << line;
    EXPECT_NE(Lines().find(line), std::string::npos) << line;
    EXPECT_EQ(world.Exists("C:\\n\\3.log"), nth == 5 || std::string_view(call) == "CopyFileExA");
  }
  Fail("", 0);
  EXPECT_EQ(iwiCopyFile(false, "C:\\a\\none", "C:\\n\\x", ""), 0u);
  EXPECT_EQ(iwiCopyFile(true, "C:\\a\\none", "C:\\n\\x", ""), 1603u);
  EXPECT_EQ(Lines(),
            "Copying from 'C:\\a\\none' to 'C:\\n\\x'\nCopy bypassed; source file 'C:\\a\\none' does not exist\n"
            "Copying from 'C:\\a\\none' to 'C:\\n\\x'\n***Error 2 copying 'C:\\a\\none'\n");
}

TEST_F(FilesTest, TheMarkerCancelsCopyingForGood) {
  world.properties["ZQVTEMP"] = "";
  EXPECT_EQ(iwiIsCopyCancelled(), FALSE);
  world.properties["ZQVTEMP"] = "C:\\temp\\";
  EXPECT_EQ(iwiIsCopyCancelled(), FALSE);
  world.WriteFile("C:\\temp\\ZQVCANCL.TXT", "");
  EXPECT_EQ(iwiCopyPattern("C:\\a", "C:\\n", "*", true), 1602u);
  fs::remove(world.HostPath("C:\\temp\\zqvcancl.txt"));
  EXPECT_EQ(iwiCopyFile(false, "C:\\a", "C:\\n", "1.txt"), 1602u);
  EXPECT_EQ(world.callCount["CopyFileExA"], 0);
  copyCancelled = FALSE;
  Reload();
  world.properties["ZQVTEMP"] = std::string(260, 'x');
  EXPECT_NE(iwiIsCopyCancelled(), FALSE);
}

TEST_F(FilesTest, TheTargetOfACopyIsMadeFromItsRoot) {
  fs::create_directories(world.root + "/unc/server/share");
  for (const char *path : {"C:\\p\\q\\", "\\\\server\\share\\r", "\\x", "C:\\", "C:", "\\\\server", "name", ""}) {
    CreateTargetFolder(path);
  }
  EXPECT_EQ(Lines(),
            "Created 'C:\\p'\nCreated 'C:\\p\\q'\n***Error ERROR_ACCESS_DENIED creating '\\\\server\\share'\n"
            "Created '\\\\server\\share\\r'\nCreated '\\x'\n");
}

}  // namespace
