#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "bare.h"
#include "fake/world.h"
#include "features/answers/response_file.h"
#include "platform/c_file.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "runtime/session.h"
#include "runtime/value_list.h"
#include "services/tables/table_row.h"
#include "zqviwicn/entry_points.h"
#include "zqviwicn/load.h"

/// The part of the figures that needs no Windows: what only the library's own code costs, and how often it calls the
/// installer. The platform is the tests' stand-in, for the floors too.
///
/// A benchmark's name is the operation, a colon and the floor, then "/own" or "/floor".
namespace {

using namespace zqv;

const std::string kList = "C:\\temp\\zqvp0001.txt";
const std::string kResponses = "C:\\temp\\answers.ini";
constexpr char kLine[] = "12:00:00 QVCA info (CaProlog): As long a line as most of them are";

const std::map<std::string, std::string> kLogs = {{"ZQVUSERTRACEPATH", "C:\\temp\\trace.log"},
                                                  {"ZQVUSERLOGPATH", "C:\\temp\\user.log"},
                                                  {"ZQVTEMPLOGPATH", "C:\\temp\\temp.log"}};

using Work = std::function<void()>;

void Ignore(const char * /*format*/, ...) {}

std::string NameOf(int number) { return "ZQVPROPERTY" + std::to_string(number); }

/// Entries or lines, each with its number.
std::string Numbered(int count, const std::string &end) {
  std::string text;
  for (int number = 0; number < count; ++number) {
    text += NameOf(number) + "=C:\\Program Files\\" + std::to_string(number) + end;
  }
  return text;
}

/// The library anew in a world with these properties.
World &Restart(const std::map<std::string, std::string> &properties = {}) {
  Unload();
  World &world = ResetWorld();
  world.properties = properties;
  world.MakeFolder("C:\\temp");
  Load();
  Session().handle = kSession;
  return world;
}

/// Figures of what has failed are none.
void Expect(bool good) {
  if (!good) {
    std::fputs("host_bench: an operation failed\n", stderr);
    std::exit(1);
  }
}

void Add(const std::string &name, const Work &prepare, const Work &work) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State &state) {
    prepare();
    for ([[maybe_unused]] const auto iteration : state) {
      work();
    }
  });
}

void AddPair(const std::string &name, const Work &prepare, const Work &own, const Work &floor) {
  Add(name + "/own", prepare, own);
  Add(name + "/floor", prepare, floor);
}

void AddValueLists(int entries) {
  const std::string of = std::to_string(entries) + " entries: ";
  const auto text = std::make_shared<std::string>(Numbered(entries, ";"));
  const auto list = std::make_shared<ValueList>();
  const auto next = std::make_shared<int>(0);
  // Another entry each time, all over the list.
  const auto name = [=] { return NameOf(*next = (*next + 7919) % entries); };
  const Work write = [=] { Restart().WriteFile(kList, *text); };
  const Work load = [=] { Expect(list->Load(kList.c_str(), Ignore)); };
  const Work prepare = [=] {
    write();
    load();
    Expect(list->Find(NameOf(entries - 1)).ends_with(std::to_string(entries - 1)));
  };
  AddPair(
      "look-up, " + of + "a scan of the text", prepare, [=] { benchmark::DoNotOptimize(list->Find(name())); },
      [=] { benchmark::DoNotOptimize(std::strstr(text->c_str(), (name() + "=").c_str())); });
  AddPair("value list, " + of + "one fgets", write, load, [=] {
    std::string line(text->size() + 1, '\0');
    const OwnedStream file(OpenCFile(kList.c_str(), "rt"));
    benchmark::DoNotOptimize(std::fgets(line.data(), static_cast<int>(line.size()), file.Get()));
  });
}

/// Reads the response file line by line.
void BareRead(const std::function<void(std::string_view line)> &visit) {
  char line[516];
  const OwnedStream file(OpenCFile(kResponses.c_str(), "rt"));
  while (std::fgets(line, sizeof line, file.Get()) != nullptr) {
    visit(line);
  }
}

void AddResponseFiles(int lines) {
  const std::string name = "response file, " + std::to_string(lines) + " lines: ";
  const Work prepare = [=] { Restart().WriteFile(kResponses, "[Response]\r\n" + Numbered(lines, "\r\n")); };
  const Work read = [] {
    responseFileState.End();
    responseFileState.Begin();
    std::string value;
    Expect(iwiReadResponseFile(kResponses) && iwiGetResponseValue(false, "response", "zqvproperty7", value));
    Expect(value == "C:\\Program Files\\7");
  };
  AddPair(name + "an fgets loop", prepare, read,
          [] { BareRead([](std::string_view line) { benchmark::DoNotOptimize(line.data()); }); });
  AddPair(name + "the same into a hash map", prepare, read, [] {
    std::unordered_map<std::string, std::string> values;
    BareRead([&](std::string_view line) {
      const std::size_t equals = line.find('=');
      values.emplace(line.substr(0, equals), line.substr(equals + 1));
    });
    benchmark::DoNotOptimize(values.size());
  });
}

/// The installer calls that `work` makes.
int CountCalls(const Work &work) {
  TheWorld().callCount.clear();
  work();
  int calls = 0;
  for (const auto &[name, count] : TheWorld().callCount) {
    calls += name.starts_with("Msi") ? count : 0;
  }
  return calls;
}

void AddCalls(const std::string &name, const std::function<int()> &count) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State &state) {
    for ([[maybe_unused]] const auto iteration : state) {
      state.counters["calls"] = count();
    }
  })->Iterations(1);
}

/// The floor makes bare calls only, and logs as many lines as the library did.
void AddCallPair(const std::string &name, const Work &own, const Work &floor) {
  const auto run = [](const Work &work) {
    Restart(kLogs).properties["ZQVPRODUCT"] = "server";
    LogLine("asks for the run modes and for the paths of the logs");
    TheWorld().installerLog.clear();
    return CountCalls(work);
  };
  AddCalls(name + "/own", [=] { return run(own); });
  AddCalls(name + "/floor", [=] {
    run(own);
    const std::size_t lines = TheWorld().installerLog.size();
    return run([=] {
      floor();
      for (std::size_t line = 0; line < lines; ++line) {
        BareMessage(kSession, kLine);
      }
    });
  });
}

/// Runs a whole primary initialisation of the server. Gives its installer calls.
int Initialise() {
  World &world = Restart(kLogs);
  world.properties.insert({{"UpgradeCode", "{8D1C5EA1-A4C5-4967-97FA-77FE6D4B5EA7}"},
                           {"ProductVersion", "6.0.0.0"},
                           {"TempFolder", "C:\\temp\\"},
                           {"SystemLanguageID", "1033"},
                           {"UILevel", "2"},
                           {"VersionNT", "502"}});
  world.created = 133541078400000000;
  world.packageCode = "{CODE}";
  world.tables["UIText"] = {{"Key", "Text"}, {{"ZQV__setup_language", "English"}}};
  world.tables["Binary"].rows = {{"zqviwiln.dll", Bytes(5, 1)}};
  for (const char letter : std::string("abfghijkrstz")) {
    world.tables["Binary"].rows.push_back({std::string("zqvirc") + letter + "n.dll", Bytes(3, 1)});
  }
  for (const UINT id : {406, 613, 695, 2001, 2092}) {
    world.modules["C:\\temp\\zqvl0001.dll"].strings[id] = "text %s";
  }
  return CountCalls([] { Expect(iwiInstallInitPri(kSession) == ERROR_SUCCESS); });
}

/// Four calls a line, and one for each property that is read or set.
int NecessaryCalls() {
  Initialise();
  int calls = 0;
  for (const std::string &line : TheWorld().installerLog) {
    calls += 4 + (line.find(": Property '") != std::string::npos ? 1 : 0);
  }
  return calls;
}

}  // namespace

int main(int argc, char **argv) {
  for (const int entries : {10, 1000, 100000}) {
    AddValueLists(entries);
  }
  for (const int lines : {100, 1000, 10000, 100000}) {
    AddResponseFiles(lines);
  }
  const std::string floor = ": bare calls, same lines";
  AddCallPair(
      "calls, a log line" + floor, [] { LogLine(kLine); }, [] {});
  AddCallPair(
      "calls, a log line, no log set" + floor,
      [] {
        for (const Kept log : {Kept::traceLog, Kept::userLog, Kept::tempLog}) {
          ValueOf(log).clear();
          TheWorld().properties.erase(NameOf(log));
        }
        LogLine(kLine);
      },
      [] {});
  AddCallPair(
      "calls, a property read" + floor,
      [] {
        std::string value;
        Expect(GetProperty("ZQVPRODUCT", value));
      },
      [] {
        char value[260];
        DWORD length = sizeof value;
        MsiGetPropertyA(kSession, "ZQVPRODUCT", value, &length);
      });
  AddCallPair(
      "calls, a row of 5 fields" + floor,
      [] {
        const FieldValue values[] = {"key", "component", "file", "folder", 3};
        Expect(iwiAddTableRow({"RemoveFile", values}) == ERROR_SUCCESS);
      },
      [] {
        BareInsert(kSession, "SELECT * FROM RemoveFile", {"key", "component", "file", "folder"}, 3);
      });
  AddCalls("calls, a primary initialisation: its lines and properties/own", Initialise);
  AddCalls("calls, a primary initialisation: its lines and properties/floor", NecessaryCalls);
  ResetWorld();
  Load();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  Unload();
  return 0;
}
