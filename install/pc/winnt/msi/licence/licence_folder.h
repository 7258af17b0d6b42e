#pragma once

#include <string>

namespace zqv {

/// The folder of licences below the program folder.
inline constexpr char kLicenceFolder[] = "\\licenses";

/// Reads where the licences are below the package's source (ZQVLICENSEPATH): a path without a backslash at its
/// beginning or end. False, with a line, when the property cannot be read or is no path below a folder.
[[nodiscard]] bool AskLicenceFolder(std::string &folder);

}  // namespace zqv
