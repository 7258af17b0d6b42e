#include <gtest/gtest.h>
#include <unwind.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <map>
#include <new>

#include "runtime/copy_cancel.h"
#include "runtime/log.h"
#include "sweep.h"
#include "zqviwicn/load.h"

/// The fault sweep: each scenario runs in each of several installations, once to count its platform calls and its
/// allocations, and then once for every one of them failing. Whatever fails, the result is an allowed one, no handle
/// stays open or is closed twice, no memory is lost, the log tells of it, and a failure that the log tells of is no
/// success. And whatever happens, the library asks for nothing but what the table of calls lists.
namespace {

using namespace zqv;

/// The allocations of the library; none of what the stand-in does for it.
struct {
  bool counted = false;
  int count = 0;
  int first = 0, last = 0;  // of those that fail; the numbers begin with 1
  void (*failing)() = nullptr;
} allocations;

void *Allocate(std::size_t size) noexcept {
  if (allocations.counted && AtWork::count == 0 && ++allocations.count >= allocations.first &&
      allocations.count <= allocations.last) {
    allocations.failing();
    return nullptr;
  }
  return std::malloc(size > 0 ? size : 1);
}

void *AllocateOrThrow(std::size_t size) {
  void *const memory = Allocate(size);
  return memory != nullptr ? memory : throw std::bad_alloc();
}

/// Where the writer of log lines makes the call that is being made: all return addresses up to the writer, folded into
/// one number. 0 for the calls of others.
std::size_t SiteInWriter() {
  struct Walk {
    std::size_t folded = 0;
    bool inWriter = false;
  } walk;
  const auto visit = [](_Unwind_Context *context, void *data) {
    Walk &to = *static_cast<Walk *>(data);
    const _Unwind_Ptr function = _Unwind_GetRegionStart(context);
    for (const _Unwind_Ptr writer : {reinterpret_cast<_Unwind_Ptr>(Log), reinterpret_cast<_Unwind_Ptr>(LogLine),
                                     reinterpret_cast<_Unwind_Ptr>(LogRaw)}) {
      to.inWriter |= function == writer;
    }
    to.folded = to.folded * 31 + _Unwind_GetIP(context);
    return to.inWriter ? _URC_NORMAL_STOP : _URC_NO_REASON;
  };
  _Unwind_Backtrace(visit, &walk);
  return walk.inWriter ? walk.folded : 0;
}

class FaultSweep : public testing::TestWithParam<SweepCase> {
 protected:
  static void TearDownTestSuite() {
    std::printf("Fault sweep: %d runs\n", std::exchange(runs_, 0));
    WriteUsedRules();
  }

  /// Runs the scenario in a fresh world, in which the platform call `call` fails with `code` and the allocations from
  /// `first` to `last` fail too; 0 for none. `onCall` runs before each call.
  UINT Run(int call, DWORD code, int first = 0, int last = 0,
           const std::function<void(std::string_view)> &onCall = nullptr) {
    ++runs_;
    World &world = ResetWorld(fresh_);
    copyCancelled = FALSE;
    Load();
    world.failCall = {"", call, code};
    world.onCall = onCall;
    inWriter_ = false;
    allocations = {true, 0, first, last, [] { inWriter_ = inWriter_ || SiteInWriter() != 0; }};
    const UINT result = std::get<0>(GetParam()).run(kSession);
    allocations.counted = false;
    world.failCall = {};
    world.onCall = nullptr;
    Unload();
    CheckLeftovers();
    return result;
  }

  /// That all is closed once, and that nothing unusual has been asked for.
  static void CheckLeftovers() {
    World &world = TheWorld();
    EXPECT_EQ(world.OpenHandles(), 0);
    EXPECT_TRUE(world.badCloses.empty()) << world.badCloses.front();
    for (const Asked &asked : world.asked) {
      if (known_.insert(asked).second) {
        EXPECT_EQ(Unexpected(asked), "");
      }
    }
  }

  /// The log's texts.
  static std::vector<std::string> Texts() {
    std::vector<std::string> texts;
    for (const std::string &line : TheWorld().installerLog) {
      texts.push_back(line.substr(std::min(line.find(": ") + 2, line.size())));
    }
    return texts;
  }

  /// Whether a text tells of a failure. Those of the reading of UIText, of a feature's state that cannot be listed and
  /// of the value list have no asterisks.
  static bool Tells(const std::string &text) {
    const auto has = [&](const char *part) { return text.find(part) != std::string::npos; };
    return text.starts_with("***") || has(". Query 'SELECT * FROM UIText'") || has(" from MsiGetFeatureState(") ||
           has("Can't allocate property value list");
  }

  /// Checks the run's result against its log, in which the lines of `usual` count for nothing.
  static void Check(const FaultRun &run, UINT result, const std::vector<std::string> &usual, bool mayBeSilent) {
    EXPECT_TRUE(MayEndWith(run, result)) << result;
    for (std::size_t line = 0; line < run.log.size(); ++line) {
      if (Tells(run.log[line]) && std::count(usual.begin(), usual.end(), run.log[line]) == 0) {
        mayBeSilent = true;
        EXPECT_TRUE(result != ERROR_SUCCESS || MaySucceed(run, line)) << "a success, but " << run.log[line];
      }
    }
    EXPECT_TRUE(mayBeSilent) << "not a line about it";
  }

  /// Writes the installer's log into the case's file in the folder that the environment names, if any, below a line
  /// that tells the fault: call, code and result, and on what the call is when it does not fail.
  static void Keep(const std::string &fault, UINT result, const std::string &argument = "") {
    if (const char *const folder = std::getenv("ZQV_SWEEP_LOGS")) {
      const auto &[scenario, setting] = GetParam();
      std::ofstream file(std::string(folder) + "/" + scenario.name + "_" + setting.name + ".txt", std::ios::app);
      file << "@ " << fault << " " << result << " " << argument << "\n";
      for (const std::string &line : TheWorld().installerLog) {
        file << line << "\n";
      }
    }
  }

  static inline bool inWriter_ = false;  // whether the writer of log lines was short of memory in the last run

 private:
  const World fresh_ = ResetWorld(GetParam());
  static inline int runs_ = 0;
  static inline std::set<Asked> known_;
};

/// Of the writer's own calls only one is made to fail for each of their places: with one code the first, with the other
/// one the last.
TEST_P(FaultSweep, EveryFailingCallIsSurvivedAndTold) {
  std::vector<int> calls;
  std::map<std::size_t, std::pair<int, int>> writersCalls;  // first and last, by their place
  std::vector<std::string> arguments;                       // of each call, one place on
  const UINT usualResult = Run(0, 0, 0, 0, [&](std::string_view) {
    const int number = TheWorld().calls;
    const std::size_t site = SiteInWriter();
    arguments.push_back(TheWorld().seen);
    if (site == 0) {
      calls.push_back(number);
    } else {
      writersCalls.emplace(site, std::pair(number, number)).first->second.second = number;
    }
  });
  const std::vector<std::string> usual = Texts();
  arguments.push_back(TheWorld().seen);
  Keep("none 0", usualResult);
  ASSERT_FALSE(calls.empty() || writersCalls.empty());
  const auto fail = [&](int call, DWORD code, bool byWriter) {
    const UINT result = Run(call, code);
    const World &world = TheWorld();
    const FaultRun run{std::get<0>(GetParam()).name, world.failedCall, code, usualResult, Texts()};
    Keep(run.call + " " + std::to_string(code), result, arguments[call]);
    SCOPED_TRACE(run.call + ", call " + std::to_string(call) + " with " + std::to_string(code));
    // Without the failure a deferred action would not have had a database either.
    const bool asUsual = world.Deferred() && run.call == "MsiGetActiveDatabase";
    Check(run, result, usual, byWriter || asUsual || MayBeSilent(run));
  };
  for (const int call : calls) {
    fail(call, 5, false);
    fail(call, 1627, false);
  }
  for (const auto &[site, numbers] : writersCalls) {
    fail(numbers.first, 5, true);
    fail(numbers.second, 1627, true);
  }
}

std::string NameOf(const testing::TestParamInfo<SweepCase> &test) {
  return std::string(std::get<0>(test.param).name) + "_" + std::get<1>(test.param).name;
}

INSTANTIATE_TEST_SUITE_P(Sweep, FaultSweep, testing::ValuesIn(SweepCases(false)), NameOf);

class AllocationFaultSweep : public FaultSweep {};

/// Memory is short once; and, for some of the allocations, from there on to the end. Then there is none for a line.
TEST_P(AllocationFaultSweep, IsSurvivedAndTold) {
  const UINT usualResult = Run(0, 0);
  const std::vector<std::string> usual = Texts();
  constexpr int kEveryNth = 4;
  const int count = allocations.count;
  for (int number = 1; number <= count; ++number) {
    SCOPED_TRACE("allocation " + std::to_string(number));
    const UINT result = Run(0, 0, number, number);
    // The writer's own reads leave no lines; what it cannot read it does without.
    Check({std::get<0>(GetParam()).name, kAllocation, 0, usualResult, Texts()}, result, usual,
          inWriter_ && result == usualResult);
    const std::string &last = TheWorld().installerLog.back();
    EXPECT_TRUE(last.ends_with(": Returning with rc " + std::to_string(result))) << last;
    if (number % kEveryNth == 0) {
      EXPECT_EQ(Run(0, 0, number, std::numeric_limits<int>::max()), static_cast<UINT>(ERROR_INSTALL_FAILURE))
          << "to the end";
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Sweep, AllocationFaultSweep, testing::ValuesIn(SweepCases(true)), NameOf);

TEST(LoadTest, WithoutMemoryThereIsNoLoad) {
  ResetWorld();
  bool loaded = false;
  for (int number = 1; !loaded; ++number) {
    allocations = {true, 0, number, number, [] {}};
    loaded = Load();
    allocations.counted = false;
    EXPECT_EQ(loaded, allocations.count < number);
    Unload();
  }
}

TEST(AskedTest, EveryCallThatTheTableListsIsMade) {
  std::set<Asked> all;
  for (const SweepCase &sweepCase : SweepCases(false)) {
    World &world = ResetWorld(sweepCase);
    copyCancelled = FALSE;
    Load();
    std::get<0>(sweepCase).run(kSession);
    Unload();
    all.merge(world.asked);
  }
  EXPECT_EQ(Missing(all), "");
}

}  // namespace

void *operator new(std::size_t size) { return AllocateOrThrow(size); }
void *operator new[](std::size_t size) { return AllocateOrThrow(size); }
void *operator new(std::size_t size, const std::nothrow_t &) noexcept { return Allocate(size); }
void *operator new[](std::size_t size, const std::nothrow_t &) noexcept { return Allocate(size); }
void operator delete(void *memory) noexcept { std::free(memory); }
void operator delete[](void *memory) noexcept { std::free(memory); }
void operator delete(void *memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void *memory, std::size_t) noexcept { std::free(memory); }
