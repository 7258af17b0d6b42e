#pragma once

#include "base/result_code.h"

namespace zqv {

/// iwiWriteResponseFile: writes the folders, the features' states and the user's switches to the response file that
/// SAVEINI names, for later installations. Returns ERROR_SUCCESS, or ERROR_INSTALL_FAILURE when the file cannot be made
/// or written, or a property or a feature's state cannot be read. Without a property the file stays empty; without a
/// feature's state, the file lacks that feature only.
ResultCode WriteResponseFile();

}  // namespace zqv
