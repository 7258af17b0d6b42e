#pragma once

#include "base/result_code.h"

namespace zqv {

/// The product's splash window, at the end of an installation. Each is the body of the exported action named beside it.
/// Both return ERROR_SUCCESS.

/// iwiWaitForSplash: waits until it is gone, at most half a minute.
ResultCode WaitForSplash();

/// iwiStopSplash: closes it, as CloseSplash does.
ResultCode StopSplash();

}  // namespace zqv
