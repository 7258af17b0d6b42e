#pragma once

#include "base/load_state.h"

namespace zqv {

extern LoadStateEntry &installLevelState;

/// Sets the installation's level: features whose own level is above it are not installed unless asked for. Done once a
/// load; when it has been, and for level 0, nothing is. False for a failure, after which it may be tried again.
[[nodiscard]] bool SetInstallLevel(int level);

}  // namespace zqv
