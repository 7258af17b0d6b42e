#include <process.h>

#include <cstdio>
#include <random>

#include "platform/owner.h"
#include "runtime/log.h"
#include "runtime/session.h"
#include "session.h"
#include "zqviwicn/load.h"

/// A process that logs busily is killed within a random line. What it had finished by then is in all three logs.
namespace {

using namespace zqv;

constexpr int kKills = 100;
constexpr unsigned kMostLines = 50;  // before a kill asked for
constexpr unsigned kMostCalls = 40;  // of the killer, which last some two lines
constexpr const char *kLogs[] = {"ZQVUSERTRACEPATH", "ZQVUSERLOGPATH", "ZQVTEMPLOGPATH"};  // in the writer's order
constexpr char kCounterName[] = "engine_tests_written_lines";
constexpr char kAskName[] = "engine_tests_ask_for_the_kill";

/// How many lines the writer has returned from, in memory that this process shares with its children.
volatile LONG &Written() {
  static const HANDLE mapping =
      CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, sizeof(LONG), kCounterName);
  static void *const view = MapViewOfFile(mapping, FILE_MAP_ALL_ACCESS, 0, 0, sizeof(LONG));
  return *static_cast<volatile LONG *>(view);
}

std::string LogPath(const std::string &folder, const char *name) { return folder + "\\" + name + ".log"; }

std::string Line(LONG number) { return "line " + std::to_string(number); }

/// The child's part: writes one line after the other until it is killed, and asks for that once there are `lines`.
void WriteBusily(const std::string &folder, LONG lines) {
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
  for (LONG count = 0;;) {
    if (count == lines) {
      SetEvent(ask);
    }
    LogLine(Line(count++));
    Written() = count;
  }
}

/// What killed processes leave to the installer goes with the test; all else of theirs is in its folder.
class KillTest : public SessionTest {
 protected:
  ~KillTest() override {
    for (const auto &path : Cached()) {
      if (!before_.contains(path)) {
        EXPECT_NO_THROW(std::filesystem::remove_all(path)) << path;
      }
    }
  }

  /// Runs a child until it has written so many lines and asks to be killed, and kills it: so many system calls later,
  /// which is anywhere in a line. False when the child ends before that.
  bool RunAndKill(unsigned lines, unsigned calls, HANDLE ask) const {
    const std::string quoted = "\"" + folder + "\"", number = std::to_string(lines);
    const OwnedKernelHandle child(reinterpret_cast<HANDLE>(
        _spawnl(_P_NOWAIT, _pgmptr, "engine_tests", "--write", quoted.c_str(), number.c_str(), nullptr)));
    const HANDLE either[] = {ask, child.Get()};
    const bool asked = WaitForMultipleObjects(2, either, FALSE, INFINITE) == WAIT_OBJECT_0;
    while (calls-- > 0) {
      WaitForSingleObject(child.Get(), 0);
    }
    TerminateProcess(child.Get(), 1);
    WaitForSingleObject(child.Get(), INFINITE);
    return asked;
  }

 private:
  static std::set<std::filesystem::path> Cached() {
    const std::filesystem::directory_iterator place("C:\\windows\\Installer");
    return {begin(place), end(place)};
  }

  const std::set<std::filesystem::path> before_ = Cached();
};

TEST_F(KillTest, NoLineThatTheWriterReturnedFromIsLost) {
  const unsigned given = static_cast<unsigned>(GTEST_FLAG_GET(random_seed)), seed = given != 0 ? given : GetTickCount();
  std::printf("kills within random lines: --gtest_random_seed=%u\n", seed);
  std::mt19937 random(seed);
  const HANDLE ask = CreateEventA(nullptr, FALSE, FALSE, kAskName);
  LONG lines = 0;
  int amid = 0;
  for (int kill = 0; kill < kKills; ++kill) {
    const unsigned least = 1 + random() % kMostLines;
    Written() = 0;
    ASSERT_TRUE(RunAndKill(least, random() % kMostCalls, ask));
    const LONG count = Written();
    lines += count;
    ASSERT_GE(count, static_cast<LONG>(least));
    // Of the line that it fell into, a log has all, nothing or a piece (the system may cut a write short when it ends
    // a process), and one log has it before the next.
    std::size_t before = std::string::npos;
    for (const char *name : kLogs) {
      const std::string log = ReadFile(LogPath(folder, name));
      LONG found = 0;
      std::istringstream stream(log);
      for (std::string line; std::getline(stream, line) && !stream.eof(); ++found) {
        EXPECT_TRUE(line.ends_with(": " + Line(found) + "\r")) << name << ": " << line;
      }
      EXPECT_GE(found, count) << name;
      EXPECT_LE(found, count + 1) << name;
      EXPECT_LE(log.size(), before) << name;
      amid += log.size() < before && before != std::string::npos ? 1 : 0;
      before = log.size();
      DeleteFileA(LogPath(folder, name).c_str());
    }
  }
  CloseHandle(ask);
  std::printf("%d kills behind %ld lines, %d of them between two logs\n", kKills, lines, amid);
}

}  // namespace

int main(int argc, char **argv) {
  if (argc == 4 && std::string(argv[1]) == "--write") {
    WriteBusily(argv[2], std::atol(argv[3]));
  }
  if (argc == 3 && std::string(argv[1]) == "--wait") {
    const OwnedKernelHandle end(OpenEventA(SYNCHRONIZE, FALSE, argv[2]));
    WaitForSingleObject(end.Get(), INFINITE);
    return 7;
  }
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
