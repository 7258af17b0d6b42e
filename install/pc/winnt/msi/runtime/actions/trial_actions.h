#pragma once

#include "platform/win32.h"

namespace zqv {

/// iwiPause: waits, with a message box, until the user goes on. Gives ERROR_SUCCESS.
UINT Pause();

/// test: fails, so that a package can try out how a failure looks. Gives ERROR_INSTALL_FAILURE.
UINT FailAsTest();

}  // namespace zqv
