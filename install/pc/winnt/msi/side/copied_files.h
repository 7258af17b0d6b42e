#pragma once

#include <string>

#include "base/result_code.h"
#include "side/undo.h"

namespace zqv {

/// Files that a deferred pass copies from the package's source to a folder below the program folder. In that folder a
/// list keeps their names, so that a removal, for which there may be no source, knows what to take away and nothing
/// else.

/// Adds to the progress bar's length a unit for each file that `pattern`, a path with a pattern as its last element,
/// matches; with `recurse` in the folders below, too.
void PlanFiles(const std::string &pattern, bool recurse);

/// Copies the files of `source` that `pattern` matches, with `recurse` those of the folders below as well, to `target`,
/// a folder below the program folder; reports a unit for each. Folders are given without a backslash at their ends. A
/// source that is not there is told, and no failure. Results as those of iwiCopyPattern; ERROR_INSTALL_FAILURE also
/// when the list cannot be written or something cannot be kept for a rollback.
[[nodiscard]] ResultCode CopyWithList(const std::string &source, const std::string &pattern, bool recurse,
                                      const std::string &target, Undo &undo);

/// Leaves to the installer, for a removal, the files of `target` that its list names, the list, and the folders that
/// are empty then. What cannot be stacked is logged, and stays. False when a property cannot
/// be read.
[[nodiscard]] bool StackListed(const std::string &home, const std::string &target);

}  // namespace zqv
