#pragma once

#include <string>

#include "base/result_code.h"

namespace zqv {

/// Copying of files and trees, until the user cancels it.

/// The file in the temporary folder that cancels it.
inline constexpr char kCancelMarker[] = "zqvcancl.txt";

/// Copies the files of the folder `source` that `pattern` matches to `destination`, which is made first if need be;
/// with `recurse` also those of the folders below, but of no folder that is a link, nor to one below `destination`,
/// where copying fails. Every file is tried. Returns ERROR_SUCCESS or the last failure: ERROR_INSTALL_FAILURE, or
/// ERROR_INSTALL_USEREXIT when copying was cancelled.
[[nodiscard]] ResultCode iwiCopyPattern(const std::string &source, const std::string &destination,
                                        const std::string &pattern, bool recurse);

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
