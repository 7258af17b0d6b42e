#pragma once

#include "base/result_code.h"

namespace zqv {

/// iwiStopAllQv: ends all of the product that runs. The immediate pass sends the stop requests, launches the product's
/// own end commands, adds the time that the waits may take to the progress bar's length, and publishes as ZQVSTOPPLAN
/// what is to be waited for; the deferred pass waits by that plan, with a countdown, and ends by force what is left.
/// Without the plan it waits for what it finds. Returns ERROR_SUCCESS, or ERROR_INSTALL_FAILURE when a folder, the
/// version or the plan cannot be read, or the plan cannot be set.
ResultCode StopAllQv();

}  // namespace zqv
