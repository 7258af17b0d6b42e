#include "base/version.h"
#include "services/system/environment.h"
#include "services/system/process.h"
#include "services/system/registry.h"
#include "support.h"

namespace {

class SystemTest : public LibraryTest {
 protected:
  SystemTest() {
    world.registry["hklm\\Key"]["Value"] = world.registry["hkcu\\Key"]["Value"] = RegistryValue::Text("long enough");
  }
};

TEST_F(SystemTest, AProgramIsLaunchedWaitedForAndItsEndReported) {
  world.WriteFile("C:\\bin\\run.exe", "");
  Program &program = world.programs["C:\\bin\\run.exe"];
  using Case = std::tuple<const char *, DWORD, DWORD, UINT, std::string>;
  for (const auto &[failing, code, timeout, result, line] :
       {Case("", 0x80000007, INFINITE, 0, "Process 'C:\\bin\\run.exe' ended; exit code 0x80000007\n"),
        Case("", 7, 4999, 1604, "Process 'C:\\bin\\run.exe' timed out.\n"),
        Case("", STILL_ACTIVE, 5000, 0, "Process 'C:\\bin\\run.exe' still active\n"),
        Case("ShellExecuteExA", 7, 0, 1603, "***Unable to launch process 'C:\\bin\\run.exe'; code 5.\n"),
        Case("WaitForSingleObject", 7, 0, 0, "***Process 'C:\\bin\\run.exe' wait error.\n"),
        Case("GetExitCodeProcess", 7, INFINITE, 0, "***Error 5 getting process 'C:\\bin\\run.exe' exit code.\n")}) {
    world.failCall = {failing, 0, 5};
    program.runtimeMs = 5000;
    program.exitCode = code;
    DWORD exitCode = 1;
    EXPECT_EQ(iwiLaunchAndWait("C:\\bin\\run.exe", "-a \"b\"", "", 0, &exitCode, timeout), result);
    EXPECT_EQ(exitCode, code == 0x80000007 ? code : kNoExitCode);
    EXPECT_EQ(Lines(), "Launching process 'C:\\bin\\run.exe' '-a \"b\"'; dir 'C:\\bin'.\n" + line);
    EXPECT_EQ(world.OpenHandles("process"), 0);
  }
  world.failCall = {};
  program.hasProcess = false;
  EXPECT_EQ(iwiLaunchAndWait("C:\\bin\\run.exe", "", "D:\\", 1, nullptr, INFINITE), 0u);
  EXPECT_EQ(Lines(),
            "Launching process 'C:\\bin\\run.exe' ''; dir 'D:\\'.\n***Process 'C:\\bin\\run.exe' wait error.\n");
  EXPECT_EQ(world.launched.back().verb, "Open");
  EXPECT_EQ(world.launched.back().show, 1);
}

TEST_F(SystemTest, OnlyPathsAreLookedForAndTheCommandProcessorNever) {
  world.programs["cmd"] = world.programs["tool"] = {};
  const std::tuple<std::string, std::string, std::string> cases[] = {
      {"cmd.exe", "cmd", ""}, {"C:\\none\\CMD", "cmd", "C:\\none"}, {"C:\\Cmd.com", "cmd", "C:"},
      {"tool", "tool", ""},   {"C:\\none\\cmdx", "", ""},           {"\\", "", ""}};
  for (const auto &[program, launched, folder] : cases) {
    EXPECT_EQ(iwiLaunchAndWait(program, "", "", 5, nullptr, INFINITE), launched.empty() ? 1603u : 0u) << program;
    const std::string line = launched.empty() ? "***Unable to find and run '" + program + "'\n"
                                              : "Launching process '" + launched + "' ''; dir '" + folder + "'.\n";
    EXPECT_TRUE(Lines().starts_with(line)) << program;
  }
  EXPECT_EQ(world.launched.size(), 4u);
  OwnedKernelHandle process;
  EXPECT_TRUE(iwiLaunch("tool", "-x", "C:\\w", 1, &process) && iwiLaunch("tool", "", "", 1, nullptr));
  EXPECT_EQ(world.OpenHandles("process"), 1) << "the caller's";
  EXPECT_FALSE(iwiLaunch("lost", "", "", 1, &process));
  EXPECT_TRUE(!process && Lines().ends_with("Launched OK\nLaunching process 'lost' ''; dir ''.\n"
                                            "***Unable to launch process; code 2.\n"));
}

TEST_F(SystemTest, RegistryValuesOfEveryTypeAndSizeAreReadAndTerminated) {
  using namespace std::string_literals;
  std::vector<BYTE> data;
  DWORD size = 99;
  UINT result = 7;  // of an earlier step
  using Case = std::tuple<DWORD, std::string, std::string>;
  for (const auto &[type, bytes, read] :
       {Case(REG_SZ, "", "\0"s), Case(REG_SZ, "a", "a\0"s), Case(REG_SZ, "ab\0"s, "ab\0"s),
        Case(REG_EXPAND_SZ, std::string(100000, 'x'), std::string(100000, 'x') + '\0'),
        Case(REG_MULTI_SZ, "a\0b\0"s, "a\0b\0\0"s), Case(REG_DWORD, "123", "123"), Case(REG_BINARY, "", ""),
        Case(REG_BINARY, "\0\1\0"s, "\0\1\0"s)}) {
    world.registry["hklm\\Key"]["Value"] = {type, bytes};
    EXPECT_TRUE(iwiRegReadValue(nullptr, "Key", "Value", &data, &size, &result));
    EXPECT_EQ(std::string(data.begin(), data.end()), read);
    EXPECT_EQ(size, bytes.size());
    std::string text = "?";
    EXPECT_TRUE(ReadRegistryText(HKEY_LOCAL_MACHINE, "Key", "Value", text));
    EXPECT_EQ(text, bytes.c_str());
  }
  EXPECT_FALSE(iwiRegReadValue(nullptr, "Key", "Lost", &data, &size, &result));
  EXPECT_EQ(data.size() + size, 0u);
  EXPECT_FALSE(iwiRegReadValue(nullptr, "Lost", "Value", &data, &size, &result));
  world.failCall = {"RegQueryValueExA", world.callCount["RegQueryValueExA"] + 2, 5};
  EXPECT_FALSE(iwiRegReadValue(nullptr, "Key", "Value", &data, nullptr, &result));
  EXPECT_TRUE(data.empty());
  EXPECT_EQ(result, 7u);
  world.failCall = {"RegOpenKeyExA", 0, 5};
  EXPECT_FALSE(iwiRegReadValue(HKEY_CURRENT_USER, "Key", "Value", nullptr, nullptr, &result));
  EXPECT_EQ(result, 1603u);
  EXPECT_EQ(Lines(), "***Can't open key 'Key' 5\n");
}

TEST_F(SystemTest, ValuesAreWrittenIntoExistingKeysOnly) {
  NameMap<RegistryValue> &key = world.registry["hklm\\Key"];
  UINT result = 7;
  EXPECT_TRUE(iwiRegWriteValue(nullptr, "Key", "Raw", REG_BINARY, "a\0b", 3, &result));
  EXPECT_EQ(key["Raw"].bytes, std::string("a\0b", 3));
  EXPECT_FALSE(iwiRegWriteValue(nullptr, "Lost", "Raw", REG_BINARY, "a", 1, &result));
  EXPECT_EQ(result, 7u);
  using Case = std::tuple<DWORD, const char *, int, int>;  // type, data, length, bytes written; below zero: none is
  for (const auto &[type, data, length, written] :
       {Case(REG_SZ, "text", -1, 5), Case(REG_EXPAND_SZ, "text", -1, 5), Case(REG_SZ, "text", 2, 2),
        Case(REG_DWORD, "text", -1, 4), Case(REG_DWORD, "text", 1, 4), Case(REG_BINARY, "text", 0, 0),
        Case(REG_BINARY, "text", -1, -1), Case(REG_MULTI_SZ, "text", -1, -1), Case(REG_SZ, nullptr, -1, -1)}) {
    key.erase("Set");
    EXPECT_EQ(iwiRegSetValue(nullptr, "Key", "Set", type, data, length), written >= 0);
    EXPECT_EQ(key.count("Set") == 0 ? -1 : static_cast<int>(key["Set"].bytes.size()), written);
  }
  EXPECT_FALSE(iwiRegSetValue(nullptr, "Lost", "Set", REG_SZ, "", -1));
  world.failCall = {"RegSetValueExA", 0, 5};
  EXPECT_FALSE(iwiRegSetValue(nullptr, "Key", "Set", REG_SZ, "", -1));
  EXPECT_FALSE(iwiRegWriteValue(nullptr, "Key", "Raw", REG_SZ, "", 1, &result));
  EXPECT_EQ(result, 1603u);
  EXPECT_EQ(Lines(),
            "Error 2 opening key 'Lost'\nError 5 setting key 'Key' value 'Set'\n"
            "***Can't set value 'Raw' key 'Key' 5\n");
}

TEST_F(SystemTest, DeletedValuesAreLoggedWithTheirRoot) {
  EXPECT_TRUE(iwiRegDeleteValue(nullptr, "Key", "Value", false));
  EXPECT_TRUE(world.registry["hklm\\Key"].empty());
  EXPECT_TRUE(iwiRegDeleteValue(HKEY_CURRENT_USER, "Key", "Value", false));
  for (const bool report : {false, true}) {
    EXPECT_TRUE(iwiRegDeleteValue(HKEY_LOCAL_MACHINE, "Lost", "Value", report));
    EXPECT_TRUE(iwiRegDeleteValue(HKEY_CURRENT_USER, "Key", "Lost", report));
  }
  EXPECT_TRUE(iwiRegDeleteValue(nullptr, "Key", "", true));
  world.failCall = {"RegDeleteValueA", 0, 5};
  EXPECT_FALSE(iwiRegDeleteValue(nullptr, "Key", "Value", false));
  world.failCall = {"RegOpenKeyExA", 0, 5};
  EXPECT_FALSE(iwiRegDeleteValue(nullptr, "Key", "Value", false));
  EXPECT_EQ(Lines(),
            "Deleted value [HKLM\\HKLM\\Key] 'Value'\nDeleted value [HKLM\\\\Key] 'Value'\n"
            "Delete value key not found [HKLM\\Lost] 'Value'\nDelete value not found [\\Key] 'Lost'\n"
            "***Delete value error 5 [HKLM\\Key] 'Value'\n***Delete value open key error 5 [HKLM\\Key] 'Value'\n");
}

TEST_F(SystemTest, BytesBecomeHexadecimalTextAndVersionsAreCompared) {
  std::string text = "old";
  EXPECT_EQ(iwiHexText(text, reinterpret_cast<const BYTE *>("\x00\x9f\xFA"), 3), "009FFA");
  EXPECT_EQ(iwiHexText(text, nullptr, 0), "");
  const std::tuple<const char *, const char *, int> versions[] = {
      {"6.0.1", "6.0.1.0", 0}, {"6.0.10", "6.0.9", 1},       {"5.9", "6", -1},    {"", "0.0", 0},
      {"..1", "0.0.1", 0},     {"1.x.2", "1.0.2", 0},        {"1.0.0.1", "1", 1}, {"1.-1", "1", -1},
      {"99999999999", "1", 1}, {"6.0.0.0.1", "6.0.0.0.2", 0}};
  for (const auto &[a, b, order] : versions) {
    EXPECT_EQ(iwiCompareVersions(a, b), order) << a << " " << b;
    EXPECT_EQ(iwiCompareVersions(b, a), -order) << a << " " << b;
  }
}

TEST_F(SystemTest, AMachineWideVariableReachesTheProcessExpanded) {
  const std::string big(100000, 'x'), edge(134, 'y');
  world.environment = {{"A", "1"}, {"Big", big}, {"Edge", edge}};
  const char key[] = "hklm\\SYSTEM\\CurrentControlSet\\Control\\Session Manager\\Environment";
  using Case = std::pair<std::string, std::string>;
  for (const auto &[value, after] : {Case("%", "%"), Case("100% sure", "100% sure"), Case("%A%%", "1%"),
                                     Case("%none%", "%none%"), Case("%Big%|%a%", big + "|1"), Case("%Edge%", edge)}) {
    world.registry[key]["Path"] = {REG_EXPAND_SZ, value};
    EXPECT_TRUE(iwiRefreshEnvironmentVariable("Path"));
    EXPECT_EQ(world.environment["Path"], after);
    EXPECT_EQ(Lines(), "Environment variable 'Path' value is:\n" + value + "\nExpanded:\n" + value + "\n- to:\n" +
                           after + "\nSet environment variable 'Path'\n");
  }
  EXPECT_EQ(world.callCount["ExpandEnvironmentStringsA"], 7) << "only the big one needs more than the first room";
  EXPECT_FALSE(iwiRefreshEnvironmentVariable("Lost"));
  world.registry[key]["Path"] = RegistryValue::Text("plain");
  world.failCall = {"SetEnvironmentVariableA", 0, 5};
  EXPECT_FALSE(iwiRefreshEnvironmentVariable("Path"));
  world.failCall = {"ExpandEnvironmentStringsA", 0, 87};
  std::string text = "%A%456789012345678901234567890";
  EXPECT_FALSE(iwiExpandEnvironment(text));
  EXPECT_EQ(text, "%A%456789012345678901234567890");
  EXPECT_EQ(Lines(),
            "Can't find and set environment variable 'Lost'\nEnvironment variable 'Path' value is:\nplain\n"
            "***Can't set environment variable 'Path'\n"
            "***Unable to expand environment strings (code 87) for '%A%45678901234567890'\n");
}

}  // namespace
