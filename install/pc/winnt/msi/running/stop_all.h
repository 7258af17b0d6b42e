#pragma once

#include "base/result_code.h"

namespace zqv {

/// iwiStopAllQv: ends all of the product that runs. The immediate pass sends the stop requests, launches the product's
/// own end commands, and adds the time that the waits may take to the progress bar's length; the deferred pass waits,
/// with a countdown, and ends by force what is left. Returns ERROR_SUCCESS, or ERROR_INSTALL_FAILURE when a folder or
/// version property cannot be read.
ResultCode StopAllQv();

}  // namespace zqv
