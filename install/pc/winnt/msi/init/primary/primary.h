#pragma once

#include "base/result_code.h"

namespace zqv {

/// iwiInstallInitPri: examines the machine, the package and what is installed already, and publishes what it learns as
/// the properties that later actions and dialogs go by. Returns ERROR_SUCCESS or ERROR_INSTALL_FAILURE.
ResultCode InitialisePrimary();

}  // namespace zqv
