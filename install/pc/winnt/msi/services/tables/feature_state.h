#pragma once

#include "platform/msi.h"

namespace zqv {

/// Sets the state that the installer is to bring a feature to. Returns ERROR_SUCCESS or ERROR_INSTALL_FAILURE.
UINT iwiSetFeatureState(const char *feature, INSTALLSTATE state);

/// Sets a feature to be installed locally, or else to be absent. A failure is stored in `result`, a success leaves it
/// alone, so that one result can follow a whole series.
void iwiSetFeatureLocal(const char *feature, bool local, UINT &result);

}  // namespace zqv
