#pragma once

#include <string>

#include "base/load_state.h"
#include "platform/win32.h"

namespace zqv {

/// Properties that name folders: each row of the RemoveFile table names its folder by such a property.

extern LoadStateEntry &pathPropertyState;

/// Gives `nameOut` the name of a property that holds `path`: one made before in this load, found without regard to
/// case, or a new one, numbered by ZQVPROPERTYCOUNTER. Returns ERROR_SUCCESS or ERROR_INSTALL_FAILURE.
UINT GetPathProperty(const std::string &path, std::string &nameOut);

}  // namespace zqv
