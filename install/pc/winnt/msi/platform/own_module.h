#pragma once

#include "platform/win32.h"

namespace zqv {

/// The module that this code is linked into, whatever its file is called: the one whose resources are the library's.
HMODULE OwnModule();

}  // namespace zqv
