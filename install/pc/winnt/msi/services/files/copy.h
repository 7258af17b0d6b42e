#pragma once

#include <functional>
#include <string>

#include "base/result_code.h"

namespace zqv {

/// Copying of files and trees, until the user cancels it.

/// The file in the temporary folder that cancels it.
inline constexpr char kCancelMarker[] = "zqvcancl.txt";

/// What a copy of a pattern calls on its way, each with the full path at the destination: `beforeFolder` before it
/// makes or uses a folder, `beforeFile` before it writes a file, `afterFile` when it is done with the file, copied or
/// not. Of the first two a result that is no ERROR_SUCCESS bars the folder with all that is in it, or the file, and
/// counts as the copy's own failure.
struct CopySteps {
  std::function<ResultCode(const std::string &path)> beforeFolder;
  std::function<ResultCode(const std::string &path)> beforeFile;
  std::function<void(const std::string &path)> afterFile;
};

/// Copies the files of the folder `source` that `pattern` matches to `destination`, which is made first if need be;
/// with `recurse` also those of the folders below, but of no folder that is a link, nor to one below `destination`,
/// where copying fails. Every file is tried. Returns ERROR_SUCCESS or the last failure: ERROR_INSTALL_FAILURE, or
/// ERROR_INSTALL_USEREXIT when copying was cancelled. With `steps`, not null and each of them given, these are called.
[[nodiscard]] ResultCode iwiCopyPattern(const std::string &source, const std::string &destination,
                                        const std::string &pattern, bool recurse, const CopySteps *steps = nullptr);

/// Copies one file, over an existing one even if that is read-only; the copy never is. With a `name`, `source` and
/// `destination` are folders; with an empty one they are the files themselves. Unless the check is skipped, a source
/// that does not exist is no error. Returns ERROR_SUCCESS, ERROR_INSTALL_FAILURE or, once cancelled,
/// ERROR_INSTALL_USEREXIT.
[[nodiscard]] ResultCode iwiCopyFile(bool skipExistenceCheck, const std::string &source, const std::string &destination,
                                     const std::string &name);

/// The copy-cancel flag. It rises, for good, when the user interface, another process, has left its marker file in
/// ZQVTEMP, or when that property cannot be read.
bool iwiIsCopyCancelled();

}  // namespace zqv
