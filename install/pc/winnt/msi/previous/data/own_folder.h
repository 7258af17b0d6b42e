#pragma once

#include <string>

#include "services/files/held_folder.h"

namespace zqv {

/// Folders of the library's own in ZQVTEMP, with names that nobody else has.

inline constexpr char kMigrationFolder[] = "zqvmigr";  ///< an earlier version's settings, on their way
inline constexpr char kSavedFolder[] = "zqvsave";      ///< what the support engineer may need

/// Where the folder is, without a backslash at its end. False, with a line, when ZQVTEMP cannot be read or is no valid
/// folder.
[[nodiscard]] bool FindOwnFolder(const char *name, std::string &path);

/// The same, and deletes the folder with all that is in it: before an immediate pass has it filled anew, or at the end.
/// False, with a line, also when it is still there.
[[nodiscard]] bool ClearOwnFolder(const char *name, std::string &path);

/// Holds the folder, or one below it. False, with a line, when it cannot be held or is a link, which would lead what is
/// copied elsewhere.
[[nodiscard]] bool HoldOwnFolder(const std::string &path, HeldFolder &held);

/// The same, and makes it before if need be.
[[nodiscard]] bool EnterOwnFolder(const std::string &path, HeldFolder &held);

}  // namespace zqv
