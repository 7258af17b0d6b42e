#include <benchmark/benchmark.h>

#include <cstdio>
#include <functional>
#include <string>

#include "fake/world.h"
#include "features/answers/response_file.h"
#include "platform/c_file.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "runtime/session.h"
#include "shared.h"
#include "zqviwicn/load.h"

/// The part of the figures that needs no Windows: response files, and how often the library calls the installer. The
/// platform is the tests' stand-in, for the floors too. A benchmark's name is that of its row, then "/own" or "/floor".
namespace {

using namespace zqv;

const std::string kResponses = "C:\\temp\\answers.ini";
constexpr char kLine[] = "12:00:00 QVCA info (CaProlog): As long a line as most of them are";

using Work = std::function<void()>;

/// The library anew in a new world.
World &Restart() {
  Unload();
  World &world = ResetWorld();
  world.MakeFolder("C:\\temp");
  Load();
  Session().handle = kSession;
  return world;
}

void AddResponseFile(int lines, const char *side, const Work &work) {
  const std::string name = "response file, " + std::to_string(lines) + " lines: an fgets loop/" + side;
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State &state) {
    std::string text = "[Response]\r\n";
    for (int line = 0; line < lines; ++line) {
      const std::string number = std::to_string(line);
      text += "ZQVPROPERTY" + number + "=C:\\Program Files\\" + number + "\r\n";
    }
    Restart().WriteFile(kResponses, text);
    for ([[maybe_unused]] const auto iteration : state) {
      work();
    }
  });
}

void ReadByLibrary() {
  responseFileState.End();
  responseFileState.Begin();
  std::string value;
  const bool read = iwiReadResponseFile(kResponses) && iwiGetResponseValue(false, "response", "zqvproperty7", value);
  Expect(read && value == "C:\\Program Files\\7", "reading a response file");
}

void ReadBare() {
  char line[516];
  const OwnedStream file(OpenCFile(kResponses.c_str(), "rt"));
  while (std::fgets(line, sizeof line, file.Get()) != nullptr) {
    benchmark::DoNotOptimize(line);
  }
}

/// The installer calls that `work` makes, once the library has asked for the run modes and for the paths of the logs.
int CountCalls(const Work &work) {
  World &world = Restart();
  world.properties = {{"ZQVUSERTRACEPATH", "C:\\temp\\trace.log"},
                      {"ZQVUSERLOGPATH", "C:\\temp\\user.log"},
                      {"ZQVTEMPLOGPATH", "C:\\temp\\temp.log"},
                      {"ZQVPRODUCT", "server"}};
  LogLine("The first line");
  world.installerLog.clear();
  world.callCount.clear();
  work();
  int calls = 0;
  for (const auto &[name, count] : world.callCount) {
    calls += name.starts_with("Msi") ? count : 0;
  }
  return calls;
}

/// The floor makes bare calls only, and logs as many lines as the library did.
void AddCalls(const std::string &operation, const Work &own, const Work &floor) {
  const std::string name = "installer calls, " + operation + ": bare calls, same lines";
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State &state) {
    for ([[maybe_unused]] const auto iteration : state) {
      state.counters["own"] = CountCalls(own);
      const std::size_t lines = TheWorld().installerLog.size();
      state.counters["floor"] = CountCalls([=] {
        floor();
        for (std::size_t line = 0; line < lines; ++line) {
          BareMessage(kSession, kLine);
        }
      });
    }
  })->Iterations(1);
}

}  // namespace

int main(int argc, char **argv) {
  for (const int lines : {100, 1000, 10000, 100000}) {
    AddResponseFile(lines, "own", ReadByLibrary);
    AddResponseFile(lines, "floor", ReadBare);
  }
  const auto readProperty = [] {
    std::string value;
    Expect(GetProperty("ZQVPRODUCT", value), "reading a property");
  };
  const auto readBare = [] {
    char value[260];
    DWORD length = sizeof value;
    MsiGetPropertyA(kSession, "ZQVPRODUCT", value, &length);
  };
  const auto logLine = [] { LogLine(kLine); };
  const auto addRow = [] { Insert("key"); };
  const auto addBare = [] { BareInsert(kSession, "key"); };
  AddCalls("a log line", logLine, [] {});
  AddCalls("a property read", readProperty, readBare);
  AddCalls("a row of 5 fields", addRow, addBare);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  Unload();
  return 0;
}
