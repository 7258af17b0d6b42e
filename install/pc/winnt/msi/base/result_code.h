#pragma once

#include "platform/win32.h"

namespace zqv {

/// What the exported actions and the installer's calls answer: ERROR_SUCCESS, ERROR_INSTALL_USEREXIT,
/// ERROR_INSTALL_FAILURE, or the installer's own code. What can only fail or not gives a bool: true, it worked.
using ResultCode = UINT;

/// The result of what can only fail or not.
constexpr ResultCode ResultOf(bool worked) { return worked ? ERROR_SUCCESS : ERROR_INSTALL_FAILURE; }

}  // namespace zqv
