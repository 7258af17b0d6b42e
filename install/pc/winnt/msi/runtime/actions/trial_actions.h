#pragma once

#include "base/result_code.h"

namespace zqv {

/// iwiPause: waits, with a message box, until the user goes on. Gives ERROR_SUCCESS.
ResultCode Pause();

/// test: fails, so that a package can try out how a failure looks. Gives ERROR_INSTALL_FAILURE.
ResultCode FailAsTest();

}  // namespace zqv
