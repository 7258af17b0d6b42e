#pragma once

#include "base/load_state.h"
#include "platform/win32.h"

namespace zqv {

extern LoadStateEntry &installLevelState;

/// Sets the installation's level: features whose own level is above it are not installed unless asked for. Done once a
/// load; when it has been, and for level 0, nothing is. Returns ERROR_SUCCESS or ERROR_INSTALL_FAILURE, after which it
/// may be tried again.
UINT SetInstallLevel(int level);

}  // namespace zqv
