#pragma once

#include <string>

#include "platform/win32.h"

namespace zqv {

/// Finds where a file of the package lies in the installation's source. `file` is its key in the File table, `folder`
/// its folder's in the Directory table; `path` gets the full path. Returns 1 when that file exists, else 0. `result`
/// gets ERROR_SUCCESS, or ERROR_INSTALL_FAILURE, with `path` empty, when its name or its folder could not be found.
int iwiGetSourceFilePath(const std::string &file, const std::string &folder, std::string &path, UINT &result);

}  // namespace zqv
