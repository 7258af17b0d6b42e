#pragma once

#include <string>

namespace zqv {

/// Leaves the removal of a folder, with all that is in it now, to the installer: a row of its RemoveFile table for each
/// file, then one for each folder, which is removed if it is empty by then, the deepest first. A folder that is a link
/// is not entered; the row for it removes the link. `component` and `installMode` are those of remove_file.h. Whether
/// anything may be removed below the folder has been judged. What cannot be stacked is logged, and stays.
void StackTree(const std::string &folder, const std::string &component, int installMode);

}  // namespace zqv
