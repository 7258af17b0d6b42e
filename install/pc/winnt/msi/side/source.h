#pragma once

#include <string>

#include "base/result_code.h"

namespace zqv {

/// Where the package comes from: the media, a folder or a share.

/// Finds the source: ZQVSOURCE, else SourceDir, else the folder of OriginalDatabase. `source` gets it tidied, with a
/// backslash at its end; empty when there is none. False, with a line, when a property cannot be read.
[[nodiscard]] bool FindSource(std::string &source);

/// Finds it for deferred actions, in an immediate pass, and publishes it as ZQVSOURCE. They run as the system, which
/// has no drives of the user's: false, with a line, when the source is on one of these, when there is none that is a
/// valid folder, or when a property cannot be read or set.
[[nodiscard]] bool HandOverSource(std::string &source);

/// Reads in a deferred action what has been handed over. False, with a line, when it cannot be read or is no valid
/// folder.
[[nodiscard]] bool FindHandedSource(std::string &source);

/// True for the path of a file or folder that a deferred action can reach. One on a mapped drive is told.
[[nodiscard]] bool IsForEveryone(const std::string &path);

/// The bodies of the exported actions that are named beside them. They return ERROR_SUCCESS, or ERROR_INSTALL_FAILURE
/// when a property cannot be read or set.

/// iwiResolveSource: publishes the source of the package's topmost directory, TARGETDIR, as ZQVSOURCE. Returns
/// ERROR_INSTALL_FAILURE also when the installer has none; behind CostFinalize it does.
ResultCode ResolveSource();

/// iwiCheckSourceAvailable: publishes whether the source is a folder that is there, "1" or nothing in
/// ZQVSOURCEAVAILABLE.
ResultCode CheckSourceAvailable();

/// iwiDirectCopyAdminFiles: in an administrative installation copies what lies beside the package and is none of its
/// files, from the source to TARGETDIR: the setup program, transforms, readme files, licences. Returns
/// ERROR_INSTALL_FAILURE, too, when there is no such folder or a file cannot be copied, ERROR_INSTALL_USEREXIT when
/// copying was cancelled.
ResultCode CopyAdminFiles();

}  // namespace zqv
