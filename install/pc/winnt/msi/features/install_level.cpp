#include "features/install_level.h"

#include <string>

#include "base/result_code.h"
#include "platform/msi.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "runtime/session.h"

namespace zqv {

namespace {

struct State {
  bool isSet = false;
};
constinit LoadState<State> state;

}  // namespace

constinit LoadStateEntry &installLevelState = state;

bool SetInstallLevel(int level) {
  if (state->isSet) {
    Log("Install level already set");
    return true;
  }
  if (level == 0) {
    return true;
  }
  if (!SetProperty("INSTALLLEVEL", std::to_string(level))) {
    return false;
  }
  const ResultCode code = MsiSetInstallLevel(Session().handle, level);
  Log("MsiSetInstallLevel(%d) rc=%d", level, code);
  state->isSet = code == ERROR_SUCCESS;
  return state->isSet;
}

}  // namespace zqv
