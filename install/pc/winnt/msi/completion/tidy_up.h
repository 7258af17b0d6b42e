#pragma once

#include "base/result_code.h"

namespace zqv {

/// iwiInstallTidyUp: what is left of an earlier version's program folder, where that is another one than the new, goes
/// as far as it is empty. The immediate pass judges the folder and hands it over (ZQVTIDYFOLDER), the deferred pass
/// removes its three folders and then itself. Returns ERROR_SUCCESS, or ERROR_INSTALL_FAILURE when a property cannot be
/// read or set.
ResultCode InstallTidyUp();

}  // namespace zqv
