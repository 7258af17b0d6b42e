#pragma once

#include "base/result_code.h"
#include "platform/msi.h"

namespace zqv {

/// Sets the state that the installer is to bring a feature to. False when it cannot be set.
[[nodiscard]] bool iwiSetFeatureState(const char *feature, INSTALLSTATE state);

/// Sets a feature to be installed locally, or else to be absent. A failure is stored in `result`, a success leaves it
/// alone, so that one result can follow a whole series.
void iwiSetFeatureLocal(const char *feature, bool local, ResultCode &result);

}  // namespace zqv
