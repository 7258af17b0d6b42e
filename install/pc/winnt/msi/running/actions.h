#pragma once

#include "base/result_code.h"

namespace zqv {

/// The small actions around a running product. Each is the body of the exported action named beside it.

/// iwiIsQvRunning: publishes ZQVQVISRUNNING and ZQVPERFMONISRUNNING, each "1" or empty.
ResultCode IsQvRunning();

/// iwiStartStopping: asks the product's services to stop, without waiting. Always ERROR_SUCCESS.
ResultCode StartStopping();

/// iwiStopIfOnlyIni: where ONLYINI is set, an installation without the full user interface ends here, as if its user
/// had ended it: ERROR_INSTALL_USEREXIT.
ResultCode StopIfOnlyIni();

/// iwiRenameQvService: hides the old service under another display name, and undoes that in a rollback.
ResultCode RenameQvService();

/// iwiSetZqvBoot: publishes as ZQVBOOT, "1" or empty, whether a restart is needed.
ResultCode SetZqvBoot();

}  // namespace zqv
