#pragma once

#include "platform/win32.h"

namespace zqv {

/// Checks that the properties that choose features (ADDLOCAL, REMOVE and their like), from the command line or the
/// response file, name none that the package lacks. A list has commas between its names, whose case matters, and may
/// hold "ALL" in any case. Each list with unknown names is shown in an error message. Returns ERROR_SUCCESS, or
/// ERROR_INSTALL_FAILURE when a name is unknown, or at once when a property or the Feature table cannot be read.
UINT ValidateFeatureLists();

}  // namespace zqv
