#pragma once

#include <string>

namespace zqv {

/// Folders of the library's own in ZQVTEMP, with names that nobody else has.

inline constexpr char kMigrationFolder[] = "zqvmigr";  ///< an earlier version's settings, on their way
inline constexpr char kSavedFolder[] = "zqvsave";      ///< what the support engineer may need

/// Where the folder is, without a backslash at its end. False, with a line, when ZQVTEMP cannot be read or is no valid
/// folder.
[[nodiscard]] bool FindOwnFolder(const char *name, std::string &path);

/// The same, for an immediate pass that is about to have it filled: what an earlier installation has left there is
/// deleted. False, with a line, also when that is still there.
[[nodiscard]] bool ClearOwnFolder(const char *name, std::string &path);

}  // namespace zqv
