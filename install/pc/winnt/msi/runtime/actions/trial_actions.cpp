#include "runtime/actions/trial_actions.h"

namespace zqv {

ResultCode Pause() {
  MessageBoxA(GetForegroundWindow(), "Pause", "Debug", MB_OK);
  return ERROR_SUCCESS;
}

ResultCode FailAsTest() { return ERROR_INSTALL_FAILURE; }

}  // namespace zqv
