#pragma once

#include <string>

namespace zqv {

/// Making folders.

/// Makes every folder on the path up to its last backslash: for a path of a drive from behind the drive's colon, for
/// one of a server from behind its share; for any other path nothing. True when nothing had to be made, false when a
/// folder was made.
bool iwiCreateFolderTree(const std::string &path);

/// Makes the folder that is copied to, with its parents: of a drive's path every folder, of a server's path from the
/// share on. Failures are logged and do not stop it.
void CreateTargetFolder(const std::string &path);

}  // namespace zqv
