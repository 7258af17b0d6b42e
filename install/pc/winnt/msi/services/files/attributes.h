#pragma once

#include <string>

#include "platform/win32.h"

namespace zqv {

/// Takes the read-only attribute from a file or folder. `report` says whether one that is not there is logged. False
/// when the attributes cannot be read, for whatever reason, or set.
bool RemoveReadOnly(const std::string &path, bool report);

/// Finds out what is at a path; INVALID_FILE_ATTRIBUTES for nothing. False, with a line, when that cannot be said.
[[nodiscard]] bool AskAttributes(const std::string &path, DWORD &attributes);

/// The same of a folder, a root included, by its attributes alone.
[[nodiscard]] bool AskFolder(const std::string &path, bool &isThere);

}  // namespace zqv
