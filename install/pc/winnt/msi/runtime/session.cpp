#include "runtime/session.h"

#include <array>
#include <optional>

namespace zqv {

namespace {

struct State {
  SessionState session;
  std::array<std::optional<bool>, MSIRUNMODE_COMMIT + 1> runModes;
};
constinit LoadState<State> state;

}  // namespace

constinit LoadStateEntry &sessionState = state;

SessionState &Session() { return state->session; }

const std::string &RunningAction() {
  const SessionState &session = state->session;
  return session.nestedAction.empty() ? session.topLevelAction : session.nestedAction;
}

bool InRunMode(MSIRUNMODE mode) {
  std::optional<bool> &known = state->runModes[mode];
  if (!known) {
    known = MsiGetMode(state->session.handle, mode) != FALSE;
  }
  return *known;
}

bool InDeferredMode() {
  return InRunMode(MSIRUNMODE_SCHEDULED) || InRunMode(MSIRUNMODE_ROLLBACK) || InRunMode(MSIRUNMODE_COMMIT);
}

void ForgetRunModes() { state->runModes.fill(std::nullopt); }

}  // namespace zqv
