#pragma once

#include <string>

#include "base/load_state.h"
#include "platform/msi.h"

namespace zqv {

/// The running installation session as one load of the library knows it: which session, which action, which run modes.

struct SessionState {
  MSIHANDLE handle = 0;        ///< the session of the top-level action; never closed by the library
  std::string topLevelAction;  ///< the outermost action; kept after it has ended
  std::string nestedAction;    ///< the innermost nested action; empty when there is none
  int depth = 0;               ///< frames now open
  bool messageShown = false;   ///< an error message has been shown since the top-level action began
};

extern LoadStateEntry &sessionState;

SessionState &Session();

/// The running action's name: the nested one if there is one, else the top-level one; empty when there is none.
const std::string &RunningAction();

/// True when the session reports the run mode. Each mode is asked for at most once per action, since its answer
/// cannot change within an action and each question is a call into another process.
bool InRunMode(MSIRUNMODE mode);

/// True in a deferred action: scheduled, rollback or commit, asked in that order.
bool InDeferredMode();

/// Forgets the answers, at the beginning and the end of an action.
void ForgetRunModes();

}  // namespace zqv
