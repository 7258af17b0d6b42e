#pragma once

#include <string>

#include "platform/win32.h"

namespace zqv {

/// Takes the read-only attribute from a file or folder. `report` says whether one that is not there is logged. Returns
/// ERROR_SUCCESS, or ERROR_INSTALL_FAILURE when the attributes cannot be read, for whatever reason, or set.
UINT RemoveReadOnly(const std::string &path, bool report);

}  // namespace zqv
