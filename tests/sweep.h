#pragma once

#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "fake/world.h"

/// What the fault sweep runs, and what may come of it.

struct Scenario {
  const char *name;
  UINT (*run)(MSIHANDLE session);
  void (*prepare)(World &world) = nullptr;
};

/// An installation that the scenarios happen in, as it differs from an upgrade of a server that runs.
struct Setting {
  const char *name;
  std::set<int> modes;
  const char *properties = "";
  bool machineIsBare = false;
};

using SweepCase = std::tuple<Scenario, Setting>;

/// Every action in every setting; but the removals of documentation, which are alike, and the library's operations in
/// the first ones. Or everything in the first two.
std::vector<SweepCase> SweepCases(bool onlyFirst);

/// A fresh world as the case needs it.
World &ResetWorld(const SweepCase &sweepCase);

inline constexpr char kAllocation[] = "new";

/// A run with a fault.
struct FaultRun {
  std::string_view scenario;
  std::string call;              ///< that failed; kAllocation for an allocation
  UINT code;                     ///< with which it failed
  UINT usual;                    ///< the result without the fault
  std::vector<std::string> log;  ///< the texts of its lines
};

bool MayEndWith(const FaultRun &run, UINT result);

/// Whether the action may succeed although this line of its log tells of a failure.
bool MaySucceed(const FaultRun &run, std::size_t line);

/// Whether there may be no line that tells of the failure.
bool MayBeSilent(const FaultRun &run);

/// Writes the rows of these three tables that have been needed so far to the file that ZQV_SWEEP_USED names, if any.
void WriteUsedRules();

/// The call as the table of calls shows it; empty when that has it.
std::string Unexpected(const Asked &asked);

/// What the table of calls has and `all` has not.
std::string Missing(const std::set<Asked> &all);
