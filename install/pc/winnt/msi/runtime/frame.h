#pragma once

#include <array>
#include <string>

#include "base/load_state.h"
#include "base/result_code.h"
#include "platform/msi.h"

namespace zqv {

/// The frame that every exported action runs inside: a prolog that records the session and begins the action's log, the
/// run-mode guard, the action's own body, and an epilog that unwinds the prolog and settles the result.

/// Whether an action may run in the deferred modes. The tests are made in the order given; the first mode that is true
/// decides.
struct RunModeGuard {
  enum Form {
    none,    ///< runs in any mode
    error,   ///< a forbidden mode is an error: ERROR_INSTALL_FAILURE
    bypass,  ///< in a forbidden mode the action does nothing, with its initial result
  } form = none;
  struct ForbiddenMode {
    MSIRUNMODE mode;
    const char *name;
  };
  std::array<ForbiddenMode, 3> forbidden = {};
};

inline constexpr RunModeGuard::ForbiddenMode kScheduled{MSIRUNMODE_SCHEDULED, "MSIRUNMODE_SCHEDULED"};
inline constexpr RunModeGuard::ForbiddenMode kRollback{MSIRUNMODE_ROLLBACK, "MSIRUNMODE_ROLLBACK"};
inline constexpr RunModeGuard::ForbiddenMode kCommit{MSIRUNMODE_COMMIT, "MSIRUNMODE_COMMIT"};

inline constexpr RunModeGuard kAnyMode{};
inline constexpr RunModeGuard kImmediateOnly{RunModeGuard::error, {kScheduled, kRollback, kCommit}};
inline constexpr RunModeGuard kNotInCommit{RunModeGuard::error, {kCommit}};
inline constexpr RunModeGuard kNotInRollbackOrCommit{RunModeGuard::error, {kRollback, kCommit}};
inline constexpr RunModeGuard kBypassedInRollback{RunModeGuard::bypass, {kRollback}};
inline constexpr RunModeGuard kBypassedUnlessImmediate{RunModeGuard::bypass, {kRollback, kScheduled, kCommit}};

/// One exported action.
struct Action {
  const char *name;          ///< as the log shows it and as an external copy of the library exports it
  ResultCode initialResult;  ///< the result unless the body gives another
  RunModeGuard guard;
  ResultCode (*body)();  ///< gives the result; null: the initial result is the result
};

extern LoadStateEntry &frameState;

/// The first line of each top-level action's log.
const std::string &BuildBanner();

/// Runs an action: what every entry point does. Returns ERROR_SUCCESS, ERROR_INSTALL_USEREXIT, ERROR_INSTALL_FAILURE or
/// what an external copy returned. Nothing is thrown.
ResultCode RunAction(const Action &action, MSIHANDLE hInstall) noexcept;

/// Returns true when an external copy of the library carried the action out: `*rcOut`, which is untouched otherwise,
/// holds its result. Returns false when the action's body is to run here.
bool CaProlog(MSIHANDLE hInstall, ResultCode *rcOut, const char *actionName, const std::string &banner);

/// Returns the action's final result: a failure, too, when there is no memory for a line.
ResultCode CaEpilog(const Action &action, ResultCode rc) noexcept;

/// Logs the user's name and the run modes that are true.
void CaLogRunModes(MSIHANDLE hInstall);

}  // namespace zqv
