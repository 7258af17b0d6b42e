#include <process.h>

#include "platform/owner.h"
#include "runtime/log.h"
#include "runtime/session.h"
#include "session.h"
#include "zqviwicn/load.h"

/// What a process has logged is in all three logs, at whatever moment it is killed.
namespace {

using namespace zqv;

constexpr int kKills = 10;
constexpr int kLines = 50;
constexpr const char *kLogs[] = {"ZQVUSERTRACEPATH", "ZQVUSERLOGPATH", "ZQVTEMPLOGPATH"};
constexpr char kAskName[] = "engine_tests_ask_for_the_kill";

std::string LogPath(const std::string &folder, const char *name) { return folder + "\\" + name + ".log"; }

std::string Line(int number) { return "line " + std::to_string(number); }

/// The child's part: writes one line after the other until it is killed, and asks for that once there are kLines.
void WriteBusily(const std::string &folder) {
  SetEnvironmentVariableA("TMP", folder.c_str());
  MsiSetInternalUI(INSTALLUILEVEL_NONE, nullptr);
  MSIHANDLE session = 0;
  MsiOpenPackageExA(kPackage, MSIOPENPACKAGEFLAGS_IGNOREMACHINESTATE, &session);
  for (const char *name : kLogs) {
    MsiSetPropertyA(session, name, LogPath(folder, name).c_str());
  }
  Load();
  Session().handle = session;
  const HANDLE ask = OpenEventA(EVENT_MODIFY_STATE, FALSE, kAskName);
  for (int count = 0;; ++count) {
    if (count == kLines) {
      SetEvent(ask);
    }
    LogLine(Line(count));
  }
}

using KillTest = SessionTest;

/// Where the installer keeps copies of packages. Those of killed processes go with the test.
std::set<std::filesystem::path> Cached() {
  const std::filesystem::directory_iterator place("C:\\windows\\Installer");
  return {begin(place), end(place)};
}

TEST_F(KillTest, NoLineThatTheWriterReturnedFromIsLost) {
  const OwnedKernelHandle ask(CreateEventA(nullptr, FALSE, FALSE, kAskName));
  const std::string quoted = "\"" + folder + "\"";
  const auto before = Cached();
  for (int kill = 0; kill < kKills; ++kill) {
    const OwnedKernelHandle child(
        reinterpret_cast<HANDLE>(_spawnl(_P_NOWAIT, _pgmptr, "engine_tests", "--write", quoted.c_str(), nullptr)));
    const HANDLE either[] = {ask.Get(), child.Get()};
    EXPECT_EQ(WaitForMultipleObjects(2, either, FALSE, INFINITE), DWORD{WAIT_OBJECT_0});
    TerminateProcess(child.Get(), 1);
    WaitForSingleObject(child.Get(), INFINITE);
    // The line that the kill fell into may be cut short.
    for (const char *name : kLogs) {
      std::istringstream log(ReadFile(LogPath(folder, name)));
      int found = 0;
      for (std::string line; std::getline(log, line) && !log.eof(); ++found) {
        EXPECT_TRUE(line.ends_with(": " + Line(found) + "\r")) << name << ": " << line;
      }
      EXPECT_GE(found, kLines) << name;
      DeleteFileA(LogPath(folder, name).c_str());
    }
  }
  for (const auto &path : Cached()) {
    EXPECT_TRUE(before.contains(path) || std::filesystem::remove_all(path) > 0) << path;
  }
}

}  // namespace

int main(int argc, char **argv) {
  if (argc == 3 && std::string(argv[1]) == "--write") {
    WriteBusily(argv[2]);
  }
  if (argc == 3 && std::string(argv[1]) == "--wait") {
    const OwnedKernelHandle end(OpenEventA(SYNCHRONIZE, FALSE, argv[2]));
    WaitForSingleObject(end.Get(), INFINITE);
    return 7;
  }
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
