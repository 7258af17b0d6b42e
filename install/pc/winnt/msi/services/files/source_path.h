#pragma once

#include <string>

#include "base/result_code.h"

namespace zqv {

/// Finds where a file of the package lies in the installation's source. `file` is its key in the File table, `folder`
/// its folder's in the Directory table; `path` gets the full path. True when that file exists. `result` gets
/// ERROR_SUCCESS, or ERROR_INSTALL_FAILURE, with `path` empty, when its name or its folder could not be found.
[[nodiscard]] bool iwiGetSourceFilePath(const std::string &file, const std::string &folder, std::string &path,
                                        ResultCode &result);

}  // namespace zqv
