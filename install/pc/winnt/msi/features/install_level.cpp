#include "features/install_level.h"

#include <string>

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

UINT SetInstallLevel(int level) {
  if (state->isSet) {
    Log("Install level already set");
    return ERROR_SUCCESS;
  }
  if (level == 0) {
    return ERROR_SUCCESS;
  }
  if (SetProperty("INSTALLLEVEL", std::to_string(level)) != ERROR_SUCCESS) {
    return ERROR_INSTALL_FAILURE;
  }
  const UINT code = MsiSetInstallLevel(Session().handle, level);
  Log("MsiSetInstallLevel(%d) rc=%d", level, code);
  state->isSet = code == ERROR_SUCCESS;
  return state->isSet ? ERROR_SUCCESS : ERROR_INSTALL_FAILURE;
}

}  // namespace zqv
