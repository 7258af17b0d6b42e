#pragma once

#include <string>

#include "services/files/delete_entry.h"

namespace zqv {

/// Deletion of files, patterns and trees. The counting and the executing pass visit the same entries in the same order.

/// Deletes the file of the request's path as DeleteOneFile does, or, when the last element of the path holds "*", all
/// files that it matches. False for a failure.
[[nodiscard]] bool iwiDeleteFile(const DeletionRequest &request);

/// Deletes by pattern, by tree, or both. With `deleteFiles` the last element of the request's path is the pattern of
/// the files to delete, and what is before it the folder; without, all of the path is the folder. `recurse` does the
/// same to the folders below, and `removeFolders` deletes each folder after what is in it, if it is empty then. A
/// folder that is a link is not entered, and `removeFolders` deletes the link; only where folders stay may the path
/// itself name the files of a link. An empty folder text, which would mean the root, is refused. The request's `report`
/// and `error` do not count. True when every part succeeded; every part is tried.
[[nodiscard]] bool iwiDeletePattern(const DeletionRequest &request);

}  // namespace zqv
