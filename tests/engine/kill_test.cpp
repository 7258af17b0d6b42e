#include <cstdio>
#include <random>

#include "session.h"

/// A process that logs busily is killed at random moments. Whatever line the writer had finished is in all three logs.
namespace {

constexpr int kKills = 200;
constexpr const char *kLogs[] = {"ZQVUSERTRACEPATH", "ZQVUSERLOGPATH", "ZQVTEMPLOGPATH"};  // in the writer's order
constexpr char kCounterName[] = "engine_tests_finished_actions";

/// Counts, in memory shared with a child process, the actions that the child has finished.
class SharedCounter {
 public:
  SharedCounter()
      : mapping_(CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, sizeof(LONG), kCounterName)),
        value_(static_cast<volatile LONG *>(MapViewOfFile(mapping_, FILE_MAP_ALL_ACCESS, 0, 0, sizeof(LONG)))) {}
  ~SharedCounter() {
    UnmapViewOfFile(const_cast<LONG *>(value_));
    CloseHandle(mapping_);
  }
  SharedCounter(const SharedCounter &) = delete;
  SharedCounter &operator=(const SharedCounter &) = delete;
  volatile LONG &operator*() { return *value_; }

 private:
  HANDLE mapping_;
  volatile LONG *value_;
};

std::string LogPath(const std::string &folder, const char *name) { return folder + "\\" + name + ".log"; }

/// The child's part: runs one action after the other until it is killed.
void RunBusily(const char *folder) {
  MsiSetInternalUI(INSTALLUILEVEL_NONE, nullptr);
  MSIHANDLE session = 0;
  MsiOpenPackageExA("vantrelqv.msi", MSIOPENPACKAGEFLAGS_IGNOREMACHINESTATE, &session);
  for (const char *name : kLogs) {
    MsiSetPropertyA(session, name, LogPath(folder, name).c_str());
  }
  MsiSetPropertyA(session, "ZQVTEMP", folder);
  SharedCounter finished;
  LoadedLibrary library;
  for (LONG count = 0;; ++count) {
    *finished = count;
    library.Call("iwiSetCustomActionData", session);
  }
}

int CountLines(const std::string &text, const std::string &end) {
  int count = 0;
  for (std::size_t at = text.find(end); at != std::string::npos; at = text.find(end, at + 1)) {
    ++count;
  }
  return count;
}

using KillTest = SessionTest;

TEST_F(KillTest, NoLineThatTheWriterReturnedFromIsLost) {
  const unsigned given = static_cast<unsigned>(GTEST_FLAG_GET(random_seed)), seed = given != 0 ? given : GetTickCount();
  std::printf("kills at random moments: --gtest_random_seed=%u\n", seed);
  std::mt19937 random(seed);
  char self[MAX_PATH];
  GetModuleFileNameA(nullptr, self, MAX_PATH);
  SharedCounter finished;
  LONG actions = 0;
  int lines = 0;
  for (int kill = 0; kill < kKills; ++kill) {
    std::string command = "\"" + std::string(self) + "\" --busy \"" + folder + "\"";
    *finished = -1;
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION child{};
    ASSERT_TRUE(
        CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &child));
    for (int waited = 0; *finished < 0 && waited < 20000; ++waited) {
      Sleep(1);
    }
    Sleep(random() % 40);
    TerminateProcess(child.hProcess, 1);
    WaitForSingleObject(child.hProcess, INFINITE);
    CloseHandle(child.hThread);
    CloseHandle(child.hProcess);
    ASSERT_GE(*finished, 0);
    actions += *finished;
    // A line goes to one log after the other, so only the last line may be missing in the later ones.
    const std::string trace = ReadFile(LogPath(folder, kLogs[0]));
    lines += CountLines(trace, "\n");
    for (const char *name : kLogs) {
      const std::string log = ReadFile(LogPath(folder, name));
      EXPECT_TRUE(trace.starts_with(log)) << name;
      EXPECT_GE(CountLines(log, "\n"), CountLines(trace, "\n") - 1) << name;
      EXPECT_GE(CountLines(log, "Returning with rc 0\r\n"), *finished) << name;
      DeleteFileA(LogPath(folder, name).c_str());
    }
  }
  std::printf("%d kills, %ld finished actions, %d lines\n", kKills, actions, lines);
  EXPECT_GT(actions, kKills);
}

}  // namespace

int main(int argc, char **argv) {
  if (argc == 3 && std::string(argv[1]) == "--busy") {
    RunBusily(argv[2]);
  }
  if (argc == 2 && std::string(argv[1]) == "--wait") {
    Sleep(500);
    return 7;
  }
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
