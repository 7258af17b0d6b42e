#include <string>
#include <vector>

#include "runtime/session.h"
#include "services/attributes.h"
#include "services/binary_stream.h"
#include "services/components.h"
#include "services/copy.h"
#include "services/create.h"
#include "services/delete.h"
#include "services/environment.h"
#include "services/features.h"
#include "services/process.h"
#include "services/registry.h"
#include "services/remove_file.h"
#include "services/source_path.h"
#include "services/table_row.h"
#include "session.h"
#include "zqviwicn/load.h"

/// The services, linked into this program, on a real session, disk and registry.
namespace {

constexpr char kKey[] = "Software\\ZqvEngineTest";
constexpr char kEnvironment[] = "SYSTEM\\CurrentControlSet\\Control\\Session Manager\\Environment";

class ServicesTest : public SessionTest {
 protected:
  ServicesTest() : SessionTest("engine_package\\engine.msi"), trace_(folder + "\\trace.log") {
    Load();
    Session().handle = session;
    Set("ZQVUSERTRACEPATH", trace_);
  }
  ~ServicesTest() override { Unload(); }

  bool Logged(const std::string &text) { return Contains(ReadFile(trace_), ": " + text + "\r\n"); }

  void Cost() {
    for (const char *action : {"CostInitialize", "FileCost", "CostFinalize"}) {
      ASSERT_EQ(MsiDoActionA(session, action), 0u) << action;
    }
  }

  static std::string Write(const std::string &path, const std::string &text = "text") {
    std::ofstream(path, std::ios::binary) << text;
    return path;
  }

  static bool Exists(const std::string &path) { return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

  static bool IsReadOnly(const std::string &path) {
    return (GetFileAttributesA(path.c_str()) & FILE_ATTRIBUTE_READONLY) != 0;
  }

  /// A value of the 32-bit view as Windows itself reads it.
  static std::string RegistryValue(const char *key, const char *name) {
    char data[4096] = "";
    DWORD size = sizeof data;
    HKEY opened = nullptr;
    RegOpenKeyExA(HKEY_LOCAL_MACHINE, key, 0, KEY_QUERY_VALUE | KEY_WOW64_32KEY, &opened);
    const bool found = RegQueryValueExA(opened, name, nullptr, nullptr, reinterpret_cast<BYTE *>(data), &size) == 0;
    RegCloseKey(opened);
    return found ? std::string(data, size) : "none";
  }

 private:
  std::string trace_;
};

TEST_F(ServicesTest, StreamsAreUnpackedByteForByte) {
  const std::string out = folder + "\\out";
  for (const int size : {0, 255, 256, 257, 512, 100000}) {
    const std::string name = "stream_" + std::to_string(size);
    std::string suffix = "stale";
    EXPECT_EQ(iwiUnpackBinary("STREAM_", std::to_string(size), out, &suffix), 1) << size;
    EXPECT_EQ(suffix, "");
    EXPECT_TRUE(Logged("Written " + std::to_string(size) + " bytes to '" + out + "'"));
    const std::string written = ReadFile(out);
    EXPECT_EQ(written.size(), static_cast<std::size_t>(size));
    EXPECT_TRUE(written == ReadFile("engine_package\\Binary\\" + name + ".ibd")) << size;
  }
  std::string suffix;
  EXPECT_EQ(iwiUnpackBinary("part_a", "", out, &suffix), 1);
  EXPECT_EQ(suffix + " " + ReadFile(out), "first first");
  EXPECT_EQ(iwiUnpackBinary("part", "", out, nullptr), 0);
}

TEST_F(ServicesTest, FeaturesComponentsAndSources) {
  Cost();
  UINT result = 0;
  iwiSetFeatureLocal("Base", false, result);
  iwiSetFeatureLocal("Server", false, result);
  EXPECT_EQ(iwiSetFeatureState("Client", INSTALLSTATE_LOCAL), 0u);
  EXPECT_EQ(result, 0u);
  for (const auto &[feature, wanted] : {std::pair("Base", INSTALLSTATE_ABSENT), {"Client", INSTALLSTATE_LOCAL}}) {
    INSTALLSTATE installed = INSTALLSTATE_BADCONFIG;
    INSTALLSTATE action = INSTALLSTATE_BADCONFIG;
    EXPECT_EQ(MsiGetFeatureStateA(session, feature, &installed, &action), 0u);
    EXPECT_EQ(action, wanted) << feature;
  }
  EXPECT_EQ(iwiSetFeatureState("Nowhere", INSTALLSTATE_LOCAL), 1603u);
  EXPECT_TRUE(Logged("***MsiSetFeatureState(Nowhere, INSTALLSTATE_LOCAL) rc: 0x00000646"));
  EXPECT_EQ(iwiFindLocalComponent("none"), "cExplorer");

  std::string path;
  EXPECT_EQ(iwiGetSourceFilePath("readme.txt", "INSTALLDIR", path, result), 1);
  EXPECT_TRUE(path.ends_with("\\engine_package\\readme.txt")) << path;
  EXPECT_EQ(iwiGetSourceFilePath("toolkit.txt", "INSTALLDIR", path, result), 0);
  EXPECT_EQ(result, 0u);
  EXPECT_EQ(iwiGetSourceFilePath("absent.txt", "INSTALLDIR", path, result), 0);
  EXPECT_EQ(result, 1603u);
  EXPECT_TRUE(Logged("***MsiViewFetch() error 259. Query 'SELECT FileName FROM File WHERE File='absent.txt''"));
  EXPECT_EQ(iwiGetSourceFilePath("readme.txt", "NOWHERE", path, result), 0);
  EXPECT_TRUE(Logged("***Unable to locate source path (267) for directory 'NOWHERE'"));
}

TEST_F(ServicesTest, ATakenKeyIsTheInstallersOwnError) {
  EXPECT_EQ(iwiStackFilesForDeletion("C:\\folder\\*.txt", "cReadme", 2), 0u);
  EXPECT_EQ(Get("ZQVRECORDCOUNTER"), "1");
  EXPECT_EQ(Get("ZQVPATHPROPERTY0"), "C:\\folder\\");
  Set("ZQVRECORDCOUNTER", "0");
  EXPECT_EQ(iwiStackFolderForDeletion("C:\\FOLDER\\", "cReadme", 2), static_cast<UINT>(ERROR_FUNCTION_FAILED));
  EXPECT_TRUE(Logged("***MsiViewModify('MSIMODIFY_INSERT_TEMPORARY') failed (1627)"));
  EXPECT_EQ(iwiAddTableRow({"Absent", 0, {}}), static_cast<UINT>(ERROR_BAD_QUERY_SYNTAX));
  EXPECT_EQ(Get("ZQVPROPERTYCOUNTER"), "1");
}

TEST_F(ServicesTest, FilesInUseAndReadOnlyOnesAreLeftToTheRestart) {
  const std::string held = Write(folder + "\\held.txt");
  const HANDLE hold = CreateFileA(held.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  const std::string locked = Write(folder + "\\locked.txt");
  SetFileAttributesA(locked.c_str(), FILE_ATTRIBUTE_READONLY);
  for (const auto &[path, code, line] :
       {std::tuple(held, 32, "***Delete file in use: '"), {locked, 5, "***Delete file access denied: '"}}) {
    int error = 0;
    EXPECT_EQ(iwiDeleteFile({.execute = true, .path = path, .error = &error}), 1);
    EXPECT_EQ(error, code);
    EXPECT_TRUE(Logged(line + path + "'"));
    EXPECT_TRUE(Logged("Stacked file for deletion upon reboot: '" + path + "'"));
    EXPECT_TRUE(Contains(RegistryValue("SYSTEM\\CurrentControlSet\\Control\\Session Manager",
                                       "PendingFileRenameOperations"),
                         path + '\0' + '\0'));
    EXPECT_TRUE(Exists(path));
  }
  CloseHandle(hold);
  EXPECT_EQ(RemoveReadOnly(locked, true), 0u);
  EXPECT_EQ(iwiDeleteFile({.execute = true, .path = folder + "\\*.t*t"}), 1);
  EXPECT_FALSE(Exists(held) || Exists(locked));
}

TEST_F(ServicesTest, TreesAreCopiedCountedAndDeleted) {
  const std::string source = folder + "\\source";
  const std::string copy = folder + "\\new\\copy";
  EXPECT_EQ(iwiCreateFolderTree(source + "\\one\\two\\"), 0);
  for (const char *name : {"\\a.txt", "\\b.dat", "\\one\\c.txt", "\\one\\two\\d.txt"}) {
    Write(source + name, name);
    SetFileAttributesA((source + name).c_str(), FILE_ATTRIBUTE_READONLY);
  }
  // The second time over what the first has left.
  for (int times = 0; times < 2; ++times) {
    EXPECT_EQ(iwiCopyPattern(source, copy, "*.txt", true), 0u);
    SetFileAttributesA((copy + "\\a.txt").c_str(), times == 0 ? FILE_ATTRIBUTE_READONLY : FILE_ATTRIBUTE_NORMAL);
  }
  for (const std::string name : {"\\a.txt", "\\one\\c.txt", "\\one\\two\\d.txt"}) {
    EXPECT_EQ(ReadFile(copy + name), name);
    EXPECT_FALSE(IsReadOnly(copy + name)) << name;
    EXPECT_EQ(RemoveReadOnly(source + name, true), 0u);
  }
  EXPECT_FALSE(Exists(copy + "\\b.dat"));

  int ticks = 0;
  EXPECT_EQ(iwiDeletePattern(true, true, &ticks, copy + "\\*", true, true, true, "", 0), 1);
  EXPECT_EQ(ticks, 6 * 100000);
  EXPECT_TRUE(Exists(copy + "\\one\\two\\d.txt"));
  EXPECT_EQ(iwiDeletePattern(false, true, nullptr, copy + "\\*", true, true, true, "", 0), 1);
  EXPECT_FALSE(Exists(copy));
  // What the pattern leaves keeps its folder, and that is no failure.
  EXPECT_EQ(iwiDeletePattern(false, true, nullptr, source + "\\*.txt", true, true, true, "", 0), 1);
  EXPECT_FALSE(Exists(source + "\\one"));
  EXPECT_TRUE(IsReadOnly(source + "\\b.dat"));
}

void CALLBACK Release(void *handle, BOOLEAN /*timedOut*/) {
  CloseHandle(handle);
}

TEST_F(ServicesTest, AFolderInUseIsTriedAgain) {
  const std::string path = folder + "\\busy";
  CreateDirectoryA(path.c_str(), nullptr);
  const HANDLE hold = CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                  OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  HANDLE timer = nullptr;
  ASSERT_TRUE(CreateTimerQueueTimer(&timer, nullptr, Release, hold, 500, 0, WT_EXECUTEONLYONCE));
  EXPECT_EQ(iwiDeleteFolder({.execute = true, .path = path}), 1);
  EXPECT_TRUE(Logged("***Delete path in use: '" + path + "'"));
  EXPECT_TRUE(Logged("Deleted path: '" + path + "'"));
  DeleteTimerQueueTimer(nullptr, timer, INVALID_HANDLE_VALUE);
}

TEST_F(ServicesTest, ProcessesAreLaunchedAndWaitedFor) {
  char self[MAX_PATH];
  GetModuleFileNameA(nullptr, self, MAX_PATH);
  DWORD code = 0;
  EXPECT_EQ(iwiLaunchAndWait(self, "--wait", "", SW_HIDE, &code, 10), kLaunchTimedOut);
  EXPECT_EQ(code, kNoExitCode);
  EXPECT_EQ(iwiLaunchAndWait(self, "--wait", folder, SW_HIDE, &code, INFINITE), 0u);
  EXPECT_EQ(code, 7u);
  EXPECT_EQ(iwiLaunchAndWait("C:\\nowhere\\CMD.exe", "/c cd > here.txt & exit 5", folder, SW_HIDE, &code, INFINITE), 0u);
  EXPECT_EQ(code, 5u);
  EXPECT_EQ(ReadFile(folder + "\\here.txt"), folder + "\r\n");
  EXPECT_EQ(iwiLaunchAndWait("nosuchprogram", "", "", SW_HIDE, &code, INFINITE), 1603u);
  EXPECT_TRUE(Logged("***Unable to launch process 'nosuchprogram'; code 2."));
  OwnedKernelHandle process;
  EXPECT_EQ(iwiLaunch(self, "--wait", "", SW_HIDE, &process), 0u);
  EXPECT_EQ(WaitForSingleObject(process.Get(), 10000), static_cast<DWORD>(WAIT_OBJECT_0));
}

TEST_F(ServicesTest, RegistryValuesAndTheEnvironment) {
  HKEY key = nullptr;
  RegCreateKeyExA(HKEY_LOCAL_MACHINE, kKey, 0, nullptr, 0, KEY_SET_VALUE | KEY_WOW64_32KEY, nullptr, &key, nullptr);
  RegSetValueExA(key, "Odd", 0, REG_MULTI_SZ, reinterpret_cast<const BYTE *>("abc"), 2);
  RegCloseKey(key);
  std::vector<BYTE> data;
  DWORD size = 0;
  UINT result = 0;
  EXPECT_EQ(iwiRegReadValue(nullptr, kKey, "Odd", &data, &size, &result), 1);
  EXPECT_EQ(data, (std::vector<BYTE>{'a', 'b', 0, 0}));
  EXPECT_EQ(size, 2u);
  EXPECT_EQ(iwiRegSetValue(nullptr, kKey, "Text", REG_SZ, "text", -1), 1);
  EXPECT_EQ(RegistryValue(kKey, "Text"), std::string("text", 5));
  EXPECT_EQ(iwiRegWriteValue(nullptr, kKey, "Bytes", REG_BINARY, "\1\0\2", 3, &result), 1);
  EXPECT_EQ(RegistryValue(kKey, "Bytes"), std::string("\1\0\2", 3));
  EXPECT_EQ(iwiRegDeleteValue(nullptr, kKey, "Text", true), 1);
  EXPECT_EQ(RegistryValue(kKey, "Text"), "none");
  EXPECT_EQ(iwiRegDeleteValue(nullptr, kKey, "Text", true), 1);
  EXPECT_TRUE(Logged("Delete value not found [HKLM\\" + std::string(kKey) + "] 'Text'"));
  EXPECT_EQ(iwiRegWriteValue(nullptr, "Software\\ZqvAbsent", "Text", REG_SZ, "", 1, &result), 0);
  EXPECT_EQ(result, 0u);
  RegDeleteKeyExA(HKEY_LOCAL_MACHINE, kKey, KEY_WOW64_32KEY, 0);

  EXPECT_EQ(iwiRegSetValue(nullptr, kEnvironment, "ZQVENGINETEST", REG_EXPAND_SZ, "%SystemDrive%\\x", -1), 1);
  EXPECT_EQ(iwiRefreshEnvironmentVariable("ZQVENGINETEST"), 1);
  char value[MAX_PATH] = "";
  GetEnvironmentVariableA("ZQVENGINETEST", value, MAX_PATH);
  EXPECT_STREQ(value, "C:\\x");
  EXPECT_EQ(iwiRegDeleteValue(nullptr, kEnvironment, "ZQVENGINETEST", true), 1);
  EXPECT_EQ(iwiRefreshEnvironmentVariable("ZQVENGINETEST"), 0);
}

}  // namespace
