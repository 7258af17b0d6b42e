#include <algorithm>
#include <filesystem>
#include <fstream>

#include "runtime/session.h"
#include "services/attributes.h"
#include "services/copy.h"
#include "services/create.h"
#include "services/delete.h"
#include "services/existence.h"
#include "support.h"

namespace {

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
    world.failCall = {call, nth, code};
  }

  /// Deletes a tree, or with a pattern its files too.
  int DeleteTree(const std::string &path, bool files = true, bool countOnly = false, int *ticks = nullptr) {
    return iwiDeletePattern(countOnly, true, ticks, path, files, true, true, "", 0);
  }
};

TEST_F(FilesTest, Existence) {
  const auto fileExists = [](const char *path) { return iwiFileExists(path); };
  const auto folderExists = [](const char *path) { return iwiFolderExists(path); };
  const auto isEmpty = [](const char *path) { return iwiIsFolderEmpty(path); };
  const auto findFile = [](const char *path) {
    std::string name = "?";
    const int found = iwiFindFile(path, &name);
    return iwiFindFile(path, nullptr) + (found != 0 && name == "1.txt" ? 1 : name == "?" ? 0 : 100);
  };
  const auto extension = [](const char *path) {
    std::string name = "?";
    const int found = iwiFindExtension(path, name);
    return found != 0 && name == "temporary" ? 1 : name == "?" ? 0 : 100;
  };
  world.MakeFolder("C:\\x\\temporary");
  world.WriteFile("C:\\x\\tempo", "");
  world.MakeFolder("C:\\x\\te");
  const std::string limit = "C:\\" + std::string(256, 'x'), above = limit + "x";
  const struct {
    int (*test)(const char *);
    std::string path;
    DWORD failure;
    int answer;
    std::string lines;
  } cases[] = {
      {fileExists, "C:\\A\\1.TXT", 0, 1, ""},
      {fileExists, "C:\\a\\?.txt", 0, 0, ""},
      {fileExists, "C:\\a\\s", 0, 0, ""},
      {fileExists, "1.txt", 5, 0, ""},
      {fileExists, "C:\\a\\1.txt", 5, 0, "***FindFirstFile(1) error 5, path 'C:\\a\\1.txt'\n"},
      {fileExists, "C:\\a\\1.txt", 123, 0, ""},
      {fileExists, limit, 0, 0, ""},
      {fileExists, above, 0, 0, "***FindFirstFile(1) error 206, path '" + above + "'\n"},
      {folderExists, " \"C:\\\\A\\\"", 0, 1, "Looking for: 'C:\\A'\nFound directory: 'a'\n"},
      {folderExists, "C:\\a\\s*", 0, 0, "Looking for: 'C:\\a\\s*'\nFound directory: 's'\n"},
      {folderExists, "C:\\a\\1.txt", 0, 0, "Looking for: 'C:\\a\\1.txt'\nFound file: '1.txt'\n"},
      {folderExists, "C:\\none\\x", 0, 0, "Looking for: 'C:\\none\\x'\n"},
      {folderExists, "C:\\a", 5, 0, "Looking for: 'C:\\a'\n***FindFirstFile(3) error 5, path 'C:\\a'\n"},
      {isEmpty, "C:\\a", 0, 0, ""},
      {isEmpty, "C:\\temp", 0, 1, ""},
      {isEmpty, "C:\\none", 0, 1, ""},
      {isEmpty, "C:\\temp", 5, 0, "***FindFirstFile(4) error 5, path 'C:\\temp\\*'\n"},
      {findFile, "C:\\a\\1*", 0, 2, "File: '1.txt'\nFile: '1.txt'\n"},
      {findFile, "C:\\a\\*", 0, 0, "Dir: '.'\nDir: '.'\n"},
      {findFile, "C:\\a\\x", 0, 0, "File not found: 'C:\\a\\x'\nFile not found: 'C:\\a\\x'\n"},
      {findFile, "C:\\x\\y\\z", 0, 0, "Path not found:: 'C:\\x\\y\\z'\nPath not found:: 'C:\\x\\y\\z'\n"},
      {findFile, "C:\\a", 5, 0, "FindFirstFile(C:\\a) failed: '5'\nFindFirstFile(C:\\a) failed: '5'\n"},
      {extension, "C:\\x\\TEMP", 0, 1, "Found extension 'C:\\x\\temporary'\n"},
      {extension, "C:\\x\\tempora\\y", 0, 0, "Can't find extension 'C:\\x\\tempora\\y*'\n"},
      {extension, "x", 0, 0, "Can't find extension 'x\\dummy*'\n"},
      {extension, "C:\\x\\t", 5, 0,
       "***FindFirstFile(2) error 5, path 'C:\\x\\t*'\nCan't find extension 'C:\\x\\t*'\n"},
  };
  for (const auto &each : cases) {
    Fail(each.failure == 0 ? "" : "FindFirstFileA", each.failure);
    EXPECT_EQ(each.test(each.path.c_str()), each.answer) << each.path;
    EXPECT_EQ(Lines(), each.lines);
  }
  Fail("FindNextFileA", 5, 2);  // behind the dots
  EXPECT_EQ(iwiIsFolderEmpty("C:\\a"), 0);
  EXPECT_EQ(Lines(), "***FindFirstFile(4) error 5, path 'C:\\a\\*'\n");
}

TEST_F(FilesTest, OnlyTheReadOnlyAttributeGoes) {
  world.attributes["C:\\a\\1.txt"] = 0x23;
  EXPECT_EQ(RemoveReadOnly("C:\\a\\1.txt", false), 0u);
  EXPECT_EQ(world.attributes["C:\\a\\1.txt"], 0x22u);
  EXPECT_EQ(RemoveReadOnly("C:\\a\\1.txt", true), 0u);
  EXPECT_EQ(Lines(), "Set attributes 0x00000022 'C:\\a\\1.txt'\n");
  world.attributes["C:\\a\\1.txt"] = 0x21;
  const struct {
    const char *path, *call;
    DWORD code;
    const char *lines, *reported;
  } failures[] = {
      {"C:\\a\\x", "", 0, "", "RemoveReadOnly: File 'C:\\a\\x' not found\n"},
      {"C:\\x\\x", "", 0, "", "RemoveReadOnly: Path 'C:\\x\\x' not found\n"},
      {"C:\\a\\?", "", 0, "***Error 123 getting attributes 'C:\\a\\?'\n", ""},
      {"C:\\a", "GetFileAttributesA", 5, "***Error ERROR_ACCESS_DENIED getting attributes 'C:\\a'\n", ""},
      {"C:\\a\\1.txt", "SetFileAttributesA", 5, "***Error ERROR_ACCESS_DENIED setting attributes 'C:\\a\\1.txt'\n", ""},
      {"C:\\a\\1.txt", "SetFileAttributesA", 19, "***Error 19 setting attributes 'C:\\a\\1.txt'\n", ""},
  };
  for (const auto &each : failures) {
    for (const bool report : {false, true}) {
      Fail(each.call, each.code);
      EXPECT_EQ(RemoveReadOnly(each.path, report), 1603u);
      EXPECT_EQ(Lines(), *each.reported != '\0' && report ? each.reported : each.lines);
    }
  }
}

TEST_F(FilesTest, EachOutcomeOfADeletion) {
  const auto file = [](bool report, int *error) {
    return iwiDeleteFile({.execute = true, .path = "C:\\a\\x", .report = report, .error = error});
  };
  const auto folder = [](bool report, int *error) {
    return iwiDeleteFolder({.execute = true, .path = "C:\\temp", .report = report, .error = error});
  };
  const auto atRestart = [](bool report, int *error) { return iwiDeleteAtReboot("C:\\a\\x", report, error); };
  const auto folderNow = [](bool, int *error) {
    *error = static_cast<int>(TheWorld().failCall.code);
    return iwiRemoveFolderNow("C:\\temp");
  };
  const std::string stacked = "Stacked file for deletion upon reboot: 'C:\\a\\x'\n";
  enum { kAlways, kReported, kReportedFailure };
  const struct {
    int (*operation)(bool report, int *error);
    const char *call;
    DWORD code;
    int result, when;
    std::string lines;
  } cases[] = {
      {file, "DeleteFileA", 2, 1, kReported, "Delete file not found: 'C:\\a\\x'\n"},
      {file, "DeleteFileA", 3, 1, kReported, "Delete file not found: 'C:\\a\\x'\n"},
      {file, "DeleteFileA", 123, 1, kReported, "Invalid name: 'C:\\a\\x'\n"},
      {file, "DeleteFileA", 32, 1, kAlways, "***Delete file in use: 'C:\\a\\x'\n" + stacked},
      {file, "DeleteFileA", 5, 1, kAlways, "***Delete file access denied: 'C:\\a\\x'\n" + stacked},
      {file, "DeleteFileA", 19, 0, kAlways, "***Delete file error: 19 'C:\\a\\x'\n" + stacked},
      {file, "", 0, 1, kAlways, "Deleted file: 'C:\\a\\x'\n"},
      {atRestart, "MoveFileExA", 2, 1, kReported, "MoveFileEx file not found: 'C:\\a\\x'\n"},
      {atRestart, "MoveFileExA", 3, 1, kReported, "MoveFileEx file not found: 'C:\\a\\x'\n"},
      {atRestart, "MoveFileExA", 123, 1, kReported, "MoveFileEx invalid name: 'C:\\a\\x'\n"},
      {atRestart, "MoveFileExA", 5, 0, kAlways, "***MoveFileEx error: 5 'C:\\a\\x'\n"},
      {folder, "RemoveDirectoryA", 2, 1, kReportedFailure, "***Delete path not found: 'C:\\temp'\n"},
      {folder, "RemoveDirectoryA", 3, 1, kReportedFailure, "***Delete path not found: 'C:\\temp'\n"},
      {folder, "RemoveDirectoryA", 145, 1, kReportedFailure, "***Delete path not empty: 'C:\\temp'\n"},
      {folder, "RemoveDirectoryA", 123, 1, kReportedFailure, "***Delete path not valid: 'C:\\temp'\n"},
      {folder, "RemoveDirectoryA", 5, 0, kAlways, "***Delete path access denied: 'C:\\temp'\n"},
      {folder, "RemoveDirectoryA", 19, 0, kAlways, "***Delete path error: 19 'C:\\temp'\n"},
      {folder, "", 0, 1, kAlways, "Deleted path: 'C:\\temp'\n"},
      {folderNow, "RemoveDirectoryA", 2, 1, kAlways, "Delete path not found: 'C:\\temp'\n"},
      {folderNow, "RemoveDirectoryA", 3, 1, kAlways, "Delete path not found: 'C:\\temp'\n"},
      {folderNow, "RemoveDirectoryA", 145, 1, kAlways, "Delete path not empty: 'C:\\temp'\n"},
      {folderNow, "RemoveDirectoryA", 123, 0, kAlways, "***Delete path not valid: 'C:\\temp'\n"},
      {folderNow, "RemoveDirectoryA", 32, 0, kAlways, "***Delete path in use: 'C:\\temp'\n"},
      {folderNow, "RemoveDirectoryA", 5, 0, kAlways, "***Delete path access denied: 'C:\\temp'\n"},
      {folderNow, "RemoveDirectoryA", 19, 0, kAlways, "***Delete path error: 19 'C:\\temp'\n"},
      {folderNow, "", 0, 1, kAlways, "Deleted path: 'C:\\temp'\n"},
  };
  for (const auto &each : cases) {
    for (const bool report : {false, true}) {
      world.WriteFile("C:\\a\\x", "");
      world.MakeFolder("C:\\temp");
      Fail(each.call, each.code);
      int error = -1;
      const bool shown = each.when == kAlways || report;
      EXPECT_EQ(each.operation(report, &error), each.when == kReportedFailure && report ? 0 : each.result)
          << each.lines;
      EXPECT_EQ(Lines(), shown ? each.lines : "");
      EXPECT_EQ(error, static_cast<int>(each.code));
    }
  }
}

TEST_F(FilesTest, AFolderInUseIsTriedTwentyTimes) {
  world.held.insert("C:\\temp");
  int error = 0;
  EXPECT_EQ(iwiDeleteFolder({.execute = true, .path = "C:\\temp", .error = &error}), 0);
  EXPECT_EQ(error, 32);
  EXPECT_EQ(world.callCount["RemoveDirectoryA"], 20);
  EXPECT_EQ(world.slept, 20000u);
  Lines();
  world.onSleep = [this](DWORD) { world.held.clear(); };
  EXPECT_EQ(iwiDeleteFolder({.execute = true, .path = "C:\\temp"}), 1);
  EXPECT_EQ(Lines(),
            "***Delete path in use: 'C:\\temp'\n"
            "Delete path in use; waiting: 'C:\\temp'\n"
            "Deleted path: 'C:\\temp'\n");
}

TEST_F(FilesTest, TheUserSeesEachDeletionAndItsTicks) {
  world.modes = {MSIRUNMODE_SCHEDULED};
  iwiDeleteFile({.execute = true, .path = "C:\\a\\1.txt"});
  iwiDeleteFolder({.execute = true, .path = "C:\\a", .report = true});
  std::string shown;
  for (const Message &message : world.messages) {
    if (message.type == INSTALLMESSAGE_PROGRESS) {
      EXPECT_EQ(message.fields, (Row{{}, 2, 100000, 0}));
      shown += "ticks\n";
    } else {
      std::string text = std::get<std::string>(message.fields.at(1));
      shown += text.substr(text.find(": ") == std::string::npos ? 0 : text.find(": ") + 2) + '\n';
    }
  }
  EXPECT_EQ(shown,
            "C:\\a\\1.txt\nDeleted file: 'C:\\a\\1.txt'\nticks\n"
            "C:\\a\nticks\n***Delete path not empty: 'C:\\a'\n");
}

TEST_F(FilesTest, TheFlagsDecideBetweenActingCountingAndStacking) {
  const std::string file = "C:\\a\\1.txt", folder = "C:\\none";
  for (const bool countOnly : {false, true}) {
    for (const bool execute : {false, true}) {
      int ticks = 7;
      world.temporaryRows.clear();
      DeletionRequest request{countOnly, execute, &ticks, file, false, nullptr, "comp", 2};
      EXPECT_EQ(iwiDeleteFile(request), 1);
      EXPECT_EQ(world.Exists(file), !execute || countOnly);
      world.WriteFile(file, "");
      request.path = folder;
      EXPECT_EQ(iwiDeleteFolder(request), 1);
      EXPECT_EQ(ticks, countOnly && execute ? 200007 : 7);
      std::vector<std::string> names;
      for (const Row &row : world.temporaryRows["RemoveFile"]) {
        const std::string *name = std::get_if<std::string>(&row[2]);
        names.push_back(name != nullptr ? *name : world.properties[std::get<std::string>(row[3])]);
      }
      EXPECT_EQ(names.size(), execute ? 0u : countOnly ? 2u : 1u);
      EXPECT_TRUE(execute || names[0] == "1.txt");
      EXPECT_TRUE(execute || !countOnly || names[1] == "C:\\none\\");
    }
  }
  world.temporaryRows.clear();
  EXPECT_EQ(iwiDeleteFile({.path = "C:\\a\\none.txt"}), 1);
  EXPECT_TRUE(world.temporaryRows.empty());
  Fail("MsiViewModify", 1627);
  EXPECT_EQ(iwiDeleteFile({.path = file}), 0);
  EXPECT_EQ(iwiDeleteFolder({.countOnly = true, .path = folder}), 0);
  int ticks = 2147483647 - 99999;
  EXPECT_EQ(iwiDeleteFile({.countOnly = true, .execute = true, .ticks = &ticks, .path = file}), 1);
  EXPECT_EQ(ticks, 2147483647);
}

TEST_F(FilesTest, ATreeGoesFromItsFilesOverItsFoldersToItself) {
  world.attributes["C:\\a\\s\\1.txt"] = FILE_ATTRIBUTE_READONLY;
  int ticks = 0;
  EXPECT_EQ(DeleteTree("C:\\a\\*.txt", true, true, &ticks), 1);
  EXPECT_EQ(ticks, 800000);
  EXPECT_EQ(Lines(), "");
  EXPECT_EQ(DeleteTree("\"C:\\\\a\\*.txt\" "), 1);  // s and a are not empty, which is no failure
  EXPECT_EQ(Lines(),
            "Deleted file: 'C:\\a\\2.txt'\n"
            "Deleted file: 'C:\\a\\1.txt'\n"
            "Deleted file: 'C:\\a\\t\\u\\1.txt'\n"
            "Deleted path: 'C:\\a\\t\\u'\n"
            "Deleted path: 'C:\\a\\t'\n"
            "***Delete file access denied: 'C:\\a\\s\\1.txt'\n"
            "Stacked file for deletion upon reboot: 'C:\\a\\s\\1.txt'\n");
  EXPECT_EQ(DeleteTree("C:\\a", false), 1);
  EXPECT_EQ(Lines(), "");
  EXPECT_EQ(iwiDeleteFile({.execute = true, .path = "C:\\a\\*"}), 1);
  EXPECT_EQ(Lines(), "Deleted file: 'C:\\a\\3.log'\n");
}

TEST_F(FilesTest, AWalkThatMeetsAnErrorGoesOn) {
  const std::string files = "Deleted file: 'C:\\a\\2.txt'\nDeleted file: 'C:\\a\\1.txt'\n";
  const auto search = [&](DWORD code, int nth) {
    world.WriteFile("C:\\a\\1.txt", "");
    world.WriteFile("C:\\a\\2.txt", "");
    Fail("FindFirstFileA", code, nth);
    return iwiDeletePattern(false, true, nullptr, "C:\\a\\?.txt", true, false, true, "", 0);
  };
  EXPECT_EQ(search(21, 1), 0);
  EXPECT_EQ(Lines(),
            "***FindFirstFile(6) error 21, path 'C:\\a\\?.txt'\n"
            "Deleted file: 'C:\\a\\t\\u\\1.txt'\nDeleted file: 'C:\\a\\s\\1.txt'\n");
  EXPECT_EQ(search(5, 1), 1);  // may not be searched: quiet, and nothing below is
  EXPECT_EQ(Lines(), "");
  EXPECT_EQ(search(5, 2), 0);
  EXPECT_EQ(Lines(), files + "***FindFirstFile(7) error 5, path 'C:\\a\\*'\n");
  for (const DWORD code : {2u, 3u, 123u}) {
    EXPECT_EQ(search(code, 1), 1);
    EXPECT_EQ(search(code, 2), 1);
    EXPECT_EQ(Lines(), files);
  }
  // A file and a folder that vanish between being found and their turn.
  bool gone = false;
  world.onCall = [&](std::string_view call) {
    if (call == "DeleteFileA" && !gone) {
      gone = true;
      std::filesystem::remove_all(world.HostPath("C:\\a\\t"));
      std::filesystem::remove(world.HostPath("C:\\a\\1.txt"));
    }
  };
  Fail("", 0);
  EXPECT_EQ(DeleteTree("C:\\a\\*"), 1);
  EXPECT_FALSE(world.Exists("C:\\a"));
}

TEST_F(FilesTest, APathThatIsNoPatternInAFolderDeletesNothing) {
  const std::string none[] = {"", "  ", "\"\"", "x", "\"\\\"", "\\*"};
  for (const std::string &path : none) {
    for (const bool files : {false, true}) {
      if (path != "x" || files) {
        EXPECT_EQ(DeleteTree(path, files), 0) << path;
        const bool root = path == "\\*" && files;
        const char *const folder = path == "x" ? "x" : root || path.find('\\') == std::string::npos ? "" : "?";
        if (*folder != '?') {
          EXPECT_EQ(Lines(), std::string("***Invalid file pattern; path '") + folder + "', pattern '" +
                                 (root ? "*" : "") + "', dirs 1, FilePaths " + (files ? "1" : "0") + "\n");
        }
      }
    }
  }
}

TEST_F(FilesTest, HostileTrees) {
  namespace fs = std::filesystem;
  world.WriteFile("C:\\keep\\1.txt", "");
  world.MakeJunction("C:\\a\\link", "C:\\keep");
  const std::string host = world.HostPath("C:\\a\\t");
  for (const char *name : {".. ", "..\\keep", " .", "...", "x\\y"}) {
    fs::create_directory(host + "/" + name);
  }
  for (const char *name : {"*", "..\\..\\keep\\1.txt", "1.txt."}) {
    std::ofstream(host + "/" + name) << "x";
  }
  EXPECT_EQ(DeleteTree("C:\\a\\*"), 1);
  EXPECT_TRUE(world.Exists("C:\\keep\\1.txt"));
  EXPECT_FALSE(world.Exists("C:\\a\\link"));
  EXPECT_FALSE(world.Exists("C:\\a\\s"));
  EXPECT_TRUE(world.Exists("C:\\a\\t"));  // what cannot be named stays

  // The link itself is the tree; then only the folder of a pattern.
  world.MakeJunction("C:\\link", "C:\\keep");
  EXPECT_EQ(iwiDeletePattern(false, true, nullptr, "C:\\link\\*", true, false, true, "", 0), 1);
  EXPECT_FALSE(world.Exists("C:\\keep\\1.txt"));
  world.WriteFile("C:\\keep\\1.txt", "");
  EXPECT_EQ(DeleteTree("C:\\link\\*"), 1);
  EXPECT_FALSE(world.Exists("C:\\link"));
  EXPECT_TRUE(world.Exists("C:\\keep\\1.txt"));

  // Deeper than any path reaches: an error, not a quiet success.
  std::string deep = world.HostPath("C:\\deep");
  for (int depth = 0; depth < 1000; ++depth) {
    deep += "/d";
  }
  fs::create_directories(deep);
  Lines();
  EXPECT_EQ(DeleteTree("C:\\deep\\*"), 0);
  const std::string lines = Lines();
  EXPECT_NE(lines.find("***FindFirstFile(6) error 206, path 'C:\\deep\\d\\d"), std::string::npos);
  EXPECT_EQ(iwiCopyPattern("C:\\deep", "C:\\copy", "*", true), 1603u);

  for (const std::size_t length : {259u, 260u, 1000u}) {
    const std::string path = "C:\\a\\" + std::string(length - 5, 'x');
    world.installerLog.clear();
    int error = 0;
    EXPECT_EQ(iwiDeleteFile({.execute = true, .path = path, .error = &error}), length < 260 ? 1 : 0);
    EXPECT_EQ(error, length < 260 ? 2 : 206);
    EXPECT_EQ(Lines(), length < 260
                           ? ""
                           : "***Delete file error: 206 '" + path + "'\n***MoveFileEx error: 206 '" + path + "'\n");
    EXPECT_EQ(iwiRemoveFolderNow(path), length < 260 ? 1 : 0);
    EXPECT_EQ(iwiCopyFile(true, path, "C:\\x", ""), 1603u);
    CreateTargetFolder(path);
  }
}

TEST_F(FilesTest, ATreeIsCopiedWithItsFolders) {
  world.MakeJunction("C:\\a\\link", "C:\\temp");
  world.attributes["C:\\a\\1.txt"] = FILE_ATTRIBUTE_READONLY;
  world.WriteFile("C:\\new\\b\\2.txt", "old");
  world.attributes["C:\\new\\b\\2.txt"] = FILE_ATTRIBUTE_READONLY;
  EXPECT_EQ(iwiCopyPattern("C:\\a\\", "C:\\new\\b", "*.txt", true), 0u);
  const std::string property = "Property 'ZQVTEMP' value 'C:\\temp' from property table\n",
                    copying = "Copying '1.txt' from ", pattern = "Copying pattern '*.txt' from tree ";
  EXPECT_EQ(Lines(), pattern + "'C:\\a\\\\' to 'C:\\new\\b\\'\n" + copying + "'C:\\a\\' to 'C:\\new\\b\\'\n" +
                         property +
                         "Set attributes 0x00000020 'C:\\new\\b\\1.txt'\n"
                         "Copying '2.txt' from 'C:\\a\\' to 'C:\\new\\b\\'\n"
                         "Set attributes 0x00000020 'C:\\new\\b\\2.txt'\n" +
                         pattern + "'C:\\a\\s\\' to 'C:\\new\\b\\s\\'\nCreated 'C:\\new\\b\\s'\n" + copying +
                         "'C:\\a\\s\\' to 'C:\\new\\b\\s\\'\n" +                                     //
                         pattern + "'C:\\a\\t\\' to 'C:\\new\\b\\t\\'\nCreated 'C:\\new\\b\\t'\n" +  //
                         pattern + "'C:\\a\\t\\u\\' to 'C:\\new\\b\\t\\u\\'\nCreated 'C:\\new\\b\\t\\u'\n" + copying +
                         "'C:\\a\\t\\u\\' to 'C:\\new\\b\\t\\u\\'\n");
  EXPECT_EQ(world.ReadFile("C:\\new\\b\\2.txt"), "C:\\a\\2.txt");
  EXPECT_EQ(world.ReadFile("C:\\new\\b\\t\\u\\1.txt"), "C:\\a\\t\\u\\1.txt");
}

TEST_F(FilesTest, FailuresOfACopyAreKeptAndDoNotStopIt) {
  const std::string first = "Copying pattern '*' from 'C:\\a\\' to 'C:\\n\\'\n";
  const struct {
    const char *call;
    DWORD code;
    int nth;
    UINT result;
    std::string line;
  } cases[] = {
      {"CopyFileExA", 5, 1, 1603, "***Error ERROR_ACCESS_DENIED copying '1.txt'\n"},
      {"CopyFileExA", 1223, 2, 1603, "***Error ERROR_CANCELLED copying '2.txt'\n"},
      {"CopyFileExA", 112, 1, 1603, "***Error 112 copying '1.txt'\n"},
      {"FindFirstFileA", 5, 1, 1603, "***FindFirstFile(8) error 5, path 'C:\\a\\*'\n"},
      {"FindFirstFileA", 3, 1, 0, first},
      {"FindNextFileA", 21, 6, 1603, "***FindFirstFile(8) error 21, path 'C:\\a\\*'\n"},
      {"CreateDirectoryA", 5, 1, 1603, "***Error ERROR_ACCESS_DENIED creating 'C:\\n'\n"},
      {"CreateDirectoryA", 112, 1, 1603, "***Error 112 creating 'C:\\n'\n"},
  };
  for (const auto &each : cases) {
    world.MakeFolder("C:\\n");
    std::filesystem::remove_all(world.HostPath("C:\\n"));
    Fail(each.call, each.code, each.nth);
    EXPECT_EQ(iwiCopyPattern("C:\\a", "C:\\n", "*", false), each.result) << each.line;
    EXPECT_NE(Lines().find(each.line), std::string::npos) << each.line;
    EXPECT_EQ(world.Exists("C:\\n\\3.log"), std::string_view(each.call) == "CopyFileExA" || each.nth == 6);
  }
  Fail("FindFirstFileA", 21, 6);  // two for the pattern and its files, one for the marker of each
  EXPECT_EQ(iwiCopyPattern("C:\\a", "C:\\n", "*", true), 1603u);
  EXPECT_NE(Lines().find("***FindFirstFile(9) error 21, path 'C:\\a\\*'\n"), std::string::npos);
  Fail("", 0);
  EXPECT_EQ(iwiCopyFile(false, "C:\\a\\none", "C:\\n\\x", ""), 0u);
  EXPECT_EQ(iwiCopyFile(true, "C:\\a\\none", "C:\\n\\x", ""), 1603u);
  EXPECT_EQ(iwiCopyFile(false, "C:\\a", "C:\\n", "x"), 0u);
  EXPECT_EQ(Lines(),
            "Copying from 'C:\\a\\none' to 'C:\\n\\x'\n"
            "Copy bypassed; source file 'C:\\a\\none' does not exist\n"
            "Copying from 'C:\\a\\none' to 'C:\\n\\x'\n"
            "***Error 2 copying 'C:\\a\\none'\n"
            "Copying 'x' from 'C:\\a\\' to 'C:\\n\\'\n"
            "Copy bypassed; source file 'C:\\a\\x' does not exist\n");
}

TEST_F(FilesTest, TheMarkerCancelsCopyingForGood) {
  world.properties["ZQVTEMP"] = "";
  EXPECT_EQ(iwiIsCopyCancelled(), FALSE);
  world.properties["ZQVTEMP"] = "C:\\temp\\";
  EXPECT_EQ(iwiIsCopyCancelled(), FALSE);
  world.WriteFile("C:\\temp\\ZQVCANCL.TXT", "");
  EXPECT_EQ(iwiCopyPattern("C:\\a", "C:\\n", "*", true), 1602u);
  EXPECT_EQ(world.callCount["CopyFileExA"], 0);
  std::filesystem::remove(world.HostPath("C:\\temp\\zqvcancl.txt"));
  EXPECT_EQ(iwiCopyFile(false, "C:\\a", "C:\\n", "1.txt"), 1602u);
  copyCancelled = FALSE;
  Reload();
  world.properties["ZQVTEMP"] = std::string(260, 'x');
  EXPECT_NE(iwiIsCopyCancelled(), FALSE);
}

TEST_F(FilesTest, TheTargetOfACopyIsMadeFromTheRoot) {
  const struct {
    const char *path, *lines;
  } cases[] = {
      {"C:\\p\\q\\", "Created 'C:\\p'\nCreated 'C:\\p\\q'\n"},
      {"C:\\", ""},
      {"C:", ""},
      {"\\\\server", ""},
      {"", ""},
      {"name", ""},
      {"\\rooted", "Created '\\rooted'\n"},
      {"\\\\server\\share\\r",
       "***Error ERROR_ACCESS_DENIED creating '\\\\server\\share'\nCreated '\\\\server\\share\\r'\n"},
      {"C:\\a?\\b", "***Error 123 creating 'C:\\a?'\n***Error 123 creating 'C:\\a?\\b'\n"},
  };
  std::filesystem::create_directories(world.root + "/unc/server/share");
  for (const auto &each : cases) {
    CreateTargetFolder(each.path);
    EXPECT_EQ(Lines(), each.lines) << each.path;
  }
}

}  // namespace
