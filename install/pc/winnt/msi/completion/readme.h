#pragma once

#include "base/result_code.h"

namespace zqv {

/// iwiSetARPREADME: makes ARPREADME, which the list of installed programs shows, the readme of the program folder: the
/// one in the system's language, "readme_CODE.txt", if the package has such a file, else "readme.txt". Without a
/// program folder it stays as it is. Returns ERROR_SUCCESS, also when the package's files cannot be read, which is
/// told; or ERROR_INSTALL_FAILURE when a property cannot be read or set.
ResultCode SetReadme();

}  // namespace zqv
