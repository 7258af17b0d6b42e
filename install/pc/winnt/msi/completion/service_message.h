#pragma once

#include "base/result_code.h"

namespace zqv {

/// iwiDisplayApplyService: where the installed level that the registry records (VRMF) is above the package's (ZQVVRMF),
/// tells the user in a box that service has to be applied again: ZQVSERVICELEVELMESSAGE. Without an installed level or
/// a text there is no box. Returns ERROR_SUCCESS, or ERROR_INSTALL_FAILURE when a property cannot be read.
ResultCode DisplayApplyService();

}  // namespace zqv
