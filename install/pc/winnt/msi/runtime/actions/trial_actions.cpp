#include "runtime/actions/trial_actions.h"

namespace zqv {

UINT Pause() {
  MessageBoxA(GetForegroundWindow(), "Pause", "Debug", MB_OK);
  return ERROR_SUCCESS;
}

UINT FailAsTest() { return ERROR_INSTALL_FAILURE; }

}  // namespace zqv
