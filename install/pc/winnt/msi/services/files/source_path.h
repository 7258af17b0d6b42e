#pragma once

#include <string>

#include "base/result_code.h"

namespace zqv {

/// Finds the folder of the installation's source that belongs to a directory, as the Directory table names it. `path`
/// gets it with a backslash at its end. False, with a line and an empty `path`, when there is none or it is longer than
/// a path.
[[nodiscard]] bool FindSourceFolder(const std::string &folder, std::string &path);

/// Finds where a file of the package lies in the installation's source. `file` is its key in the File table, `folder`
/// its folder's in the Directory table; `path` gets the full path. True when that file exists. `result` gets
/// ERROR_SUCCESS, or ERROR_INSTALL_FAILURE, with `path` empty, when its name or its folder could not be found.
[[nodiscard]] bool iwiGetSourceFilePath(const std::string &file, const std::string &folder, std::string &path,
                                        ResultCode &result);

}  // namespace zqv
