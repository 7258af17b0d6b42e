#pragma once

#include <string>

#include "base/result_code.h"

namespace zqv {

/// Leaving deletions to the installer: temporary rows of its RemoveFile table, which it carries out when it removes
/// files. Each row's folder is named by a path property, its key is numbered by the record counter.
///
/// `component` is the key of the component that the row belongs to; `installMode` is the table's, and says whether the
/// removal is carried out when that component is installed, or removed, or both. A row that cannot be added still
/// advances the counter. Both return ERROR_SUCCESS, ERROR_INSTALL_FAILURE, or the installer's own code where adding the
/// row failed.

enum InstallMode { kWhenInstalled = 1, kWhenRemoved = 2, kAlways = 3 };

/// Stacks the removal of a file, or of the files that a pattern in the path's last element matches. A path that does
/// not name both a folder and a file is reported, and adds a row with neither all the same.
[[nodiscard]] ResultCode iwiStackFilesForDeletion(const std::string &path, const std::string &component,
                                                  int installMode);

/// Stacks the removal of a folder, if it is empty by then. The path must end in a backslash; otherwise nothing is added
/// and the counter stays.
[[nodiscard]] ResultCode iwiStackFolderForDeletion(const std::string &path, const std::string &component,
                                                   int installMode);

}  // namespace zqv
