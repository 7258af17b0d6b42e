#include "base/code_page.h"
#include "runtime/session.h"
#include "services/files/attributes.h"
#include "services/files/copy.h"
#include "services/files/create.h"
#include "services/files/delete.h"
#include "services/files/existence.h"
#include "services/files/held_folder.h"
#include "services/files/source_path.h"
#include "services/system/process.h"
#include "session.h"
#include "zqviwicn/entry_points.h"
#include "zqviwicn/load.h"

namespace {

using namespace zqv;

/// The services, linked into this program, on a real session, disk and registry.
class ServicesTest : public SessionTest {
 protected:
  ServicesTest() {
    Load();
    Session().handle = session;
    Set("ZQVUSERTRACEPATH", trace_);
  }
  ~ServicesTest() override { Unload(); }

  bool Logged(const std::string &text) { return ReadFile(trace_).find(": " + text + "\r\n") != std::string::npos; }

  std::string Write(const std::string &name, DWORD attributes = FILE_ATTRIBUTE_NORMAL) {
    const std::string path = folder + "\\" + name;
    std::ofstream(path, std::ios::binary) << name;
    SetFileAttributesA(path.c_str(), attributes);
    return path;
  }

  static bool Exists(const std::string &path) { return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

 private:
  const std::string trace_ = folder + "\\trace.log";
};

TEST_F(ServicesTest, ActionsLeaveNoHandleOpenAndFailCleanlyWithoutASession) {
  for (const auto action : {iwiStartLogs, iwiSetTempLogPath, iwiUnSetTempLogPath, iwiPrintSummary,
                            iwiWriteDeferredProperties, iwiSetCustomActionData}) {
    for (const auto &[handle, result] : {std::pair{MSIHANDLE{0}, 1603u}, {session, 0u}}) {
      Unload();
      Load();
      EXPECT_EQ(action(handle), result);
    }
  }
}

TEST_F(ServicesTest, SourcesAreFound) {
  for (const char *action : {"CostInitialize", "FileCost", "CostFinalize"}) {
    ASSERT_EQ(MsiDoActionA(session, action), 0u) << action;
  }
  UINT result = 0;
  std::string path;
  EXPECT_TRUE(iwiGetSourceFilePath("readme.txt", "ZQVPGMFOLDER", path, result));
  EXPECT_TRUE(path.ends_with("\\engine_package\\readme.txt")) << path;
  EXPECT_FALSE(iwiGetSourceFilePath("toolkit.txt", "ZQVPGMFOLDER", path, result));
  EXPECT_EQ(result, 0u);
  EXPECT_FALSE(iwiGetSourceFilePath("absent.txt", "ZQVPGMFOLDER", path, result));
  EXPECT_EQ(result, 1603u);
  EXPECT_FALSE(iwiGetSourceFilePath("readme.txt", "NOWHERE", path, result));
  EXPECT_TRUE(Logged("***Unable to locate source path (267) for directory 'NOWHERE'"));
}

TEST_F(ServicesTest, FilesInUseAndReadOnlyOnesAreLeftToTheRestart) {
  const std::string held = Write("held.txt");
  const OwnedFile hold(CreateFileA(held.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  const std::string locked = Write("locked.txt", FILE_ATTRIBUTE_READONLY);
  for (const auto &[path, code] : {std::pair(held, ERROR_SHARING_VIOLATION), {locked, ERROR_ACCESS_DENIED}}) {
    int error = 0;
    EXPECT_TRUE(iwiDeleteFile({.execute = true, .path = path, .error = &error}));
    EXPECT_EQ(error, code);
    EXPECT_TRUE(Logged("Stacked file for deletion upon reboot: '" + path + "'"));
    EXPECT_TRUE(Exists(path));
  }
  EXPECT_TRUE(RemoveReadOnly(locked, true));
  EXPECT_TRUE(iwiDeleteFile({.execute = true, .path = folder + "\\lo*.txt"}));
  EXPECT_FALSE(Exists(locked));
}

TEST_F(ServicesTest, AHeldFolderStaysInItsPlace) {
  const std::string tree = folder + "\\tree", moved = folder + "\\moved";
  EXPECT_FALSE(iwiCreateFolderTree(tree + "\\"));
  HeldFolder held(tree);
  EXPECT_EQ(held.Error(), ERROR_SUCCESS);
  EXPECT_FALSE(held.IsLink());
  EXPECT_FALSE(MoveFileA(tree.c_str(), moved.c_str()));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_SHARING_VIOLATION});
  EXPECT_FALSE(iwiRemoveFolderNow(tree));
  EXPECT_TRUE(Logged("***Delete path in use: '" + tree + "'"));
  held.LetGo();
  EXPECT_TRUE(MoveFileA(tree.c_str(), moved.c_str()));
  EXPECT_EQ(HeldFolder(tree).Error(), ERROR_FILE_NOT_FOUND);
  EXPECT_FALSE(iwiCreateFolderTree(moved + "\\sub\\deep\\"));
  EXPECT_TRUE(iwiDeletePattern({.execute = true, .path = moved, .removeFolders = true, .recurse = true}));
  EXPECT_FALSE(Exists(moved));
  EXPECT_EQ(HeldFolder(folder.substr(0, 2)).Error() + HeldFolder("").Error(), ERROR_SUCCESS);
}

TEST_F(ServicesTest, ProcessesAreLaunchedAndWaitedFor) {
  DWORD code = 0;
  // Of manual reset: it ends both programs that wait for it.
  const OwnedKernelHandle end(CreateEventA(nullptr, TRUE, FALSE, "engine_tests_end"));
  EXPECT_EQ(iwiLaunchAndWait(_pgmptr, "--wait engine_tests_end", "", SW_HIDE, &code, 10), kLaunchTimedOut);
  EXPECT_EQ(code, kNoExitCode);
  SetEvent(end.Get());
  EXPECT_EQ(iwiLaunchAndWait(_pgmptr, "--wait engine_tests_end", "", SW_HIDE, &code, INFINITE), 0u);
  EXPECT_EQ(code, 7u);
  EXPECT_EQ(iwiLaunchAndWait("C:\\none\\CMD.exe", "/c cd > here.txt & exit 5", folder, SW_HIDE, &code, INFINITE), 0u);
  EXPECT_EQ(code, 5u);
  EXPECT_EQ(ReadFile(folder + "\\here.txt"), folder + "\r\n");
}

/// The same under a locale whose ANSI code page is another one.
using CodePageTest = ServicesTest;

TEST_F(CodePageTest, Japanese) {
  ASSERT_EQ(GetACP(), 932u);
  for (const std::string name : {"\x83\x5C", "\x95\x5C", "\x94\x5C"}) {
    const std::string top = folder + "\\" + name, copy = folder + "\\c" + name;
    EXPECT_EQ(iwiCreateFolderTree(top + "\\" + name + "\\"), 0);
    const std::string file = Write(name + "\\" + name + "\\" + name);
    EXPECT_EQ(iwiFileExists(file) + iwiFolderExists(top + "\\"), 2);
    EXPECT_EQ(iwiCopyPattern(top, copy, "*", true), 0u);
    EXPECT_EQ(ReadFile(copy + file.substr(top.size())), name + "\\" + name + "\\" + name);
    EXPECT_TRUE(iwiDeletePattern(
        {.execute = true, .path = top + "\\*", .deleteFiles = true, .removeFolders = true, .recurse = true}));
    EXPECT_FALSE(Exists(top));
  }
  EXPECT_TRUE(EqualName("\x82\x81\xB1", "\x82\x60\xB1"));  // a wide "a", and a letter of one byte
  EXPECT_FALSE(EqualName("\x83\x4A", "\x83\x6A"));
  EXPECT_FALSE(EqualName("\x83", "\x84"));  // no characters
}

TEST_F(CodePageTest, German) {
  ASSERT_EQ(GetACP(), 1252u);
  CreateDirectoryA((folder + "\\s").c_str(), nullptr);
  const std::string file = Write("s\\\xE9.txt");
  EXPECT_EQ(iwiFileExists(folder + "\\S\\\xC9.TXT"), 1);
  EXPECT_TRUE(EqualName("\xFF", "\x9F"));
  EXPECT_FALSE(EqualName("\xF7", "\xD7"));
  // A name that has no spelling here is not copied, and not passed over in silence.
  const std::wstring unspelt = std::wstring(folder.begin(), folder.end()) + L"\\s\\\x30AB.txt";
  CloseHandle(CreateFileW(unspelt.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
  EXPECT_EQ(iwiCopyPattern(folder + "\\s", folder + "\\t", "*", true), 1603u);
  EXPECT_TRUE(Logged("***Error 123 copying '?.txt'"));
  EXPECT_EQ(ReadFile(folder + "\\t\\\xE9.txt"), "s\\\xE9.txt");
  EXPECT_TRUE(iwiDeletePattern(
      {.execute = true, .path = folder + "\\s\\*", .deleteFiles = true, .removeFolders = true, .recurse = true}));
  EXPECT_FALSE(Exists(file));
  EXPECT_TRUE(Exists(folder + "\\s"));
}

}  // namespace
