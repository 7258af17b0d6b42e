#include <cstdlib>

#include "session.h"

/// A process that logs busily is killed at random moments. Whatever line its calls had returned from is in the trace.
namespace {

constexpr int kKills = 25;
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

/// The child's part: runs one action after the other until it is killed.
void RunBusily(const char *trace, const char *folder) {
  MsiSetInternalUI(INSTALLUILEVEL_NONE, nullptr);
  MSIHANDLE session = 0;
  MsiOpenPackageExA("vantrelqv.msi", MSIOPENPACKAGEFLAGS_IGNOREMACHINESTATE, &session);
  MsiSetPropertyA(session, "ZQVUSERTRACEPATH", trace);
  MsiSetPropertyA(session, "ZQVTEMP", folder);
  SharedCounter finished;
  LoadedLibrary library;
  for (;;) {
    library.Call("iwiUserExit", session);
    *finished = *finished + 1;
  }
}

int CountLines(const std::string &text, const std::string &part) {
  int count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

using KillTest = SessionTest;

TEST_F(KillTest, NoLineThatTheWriterReturnedFromIsLost) {
  char self[MAX_PATH];
  GetModuleFileNameA(nullptr, self, MAX_PATH);
  SharedCounter finished;
  for (int kill = 0; kill < kKills; ++kill) {
    const std::string trace = folder + "\\trace" + std::to_string(kill) + ".log";
    std::string command = "\"" + std::string(self) + "\" --busy \"" + trace + "\" \"" + folder + "\"";
    *finished = 0;
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION child{};
    ASSERT_TRUE(
        CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &child));
    for (int waited = 0; *finished == 0 && waited < 20000; waited += 5) {
      Sleep(5);
    }
    Sleep(static_cast<DWORD>(std::rand() % 40));
    TerminateProcess(child.hProcess, 1);
    WaitForSingleObject(child.hProcess, INFINITE);
    CloseHandle(child.hThread);
    CloseHandle(child.hProcess);
    const int logged = CountLines(ReadFile(trace), "Returning with rc 1602\r\n");
    EXPECT_GT(*finished, 0);
    EXPECT_GE(logged, *finished);
  }
}

}  // namespace

int main(int argc, char **argv) {
  if (argc == 4 && std::string(argv[1]) == "--busy") {
    RunBusily(argv[2], argv[3]);
  }
  if (argc == 2 && std::string(argv[1]) == "--wait") {
    Sleep(500);
    return 7;
  }
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
