#pragma once

#include <string>

#include "platform/owner.h"

namespace zqv {

/// LoadLibraryExA with the same flags. A path whose folder is not absolute is not looked for, since it would lead to
/// wherever the process happens to be: no module, and the last error is ERROR_MOD_NOT_FOUND.
OwnedModule LoadModuleFile(const std::string &path, DWORD flags);

}  // namespace zqv
