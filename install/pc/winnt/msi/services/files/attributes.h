#pragma once

#include <string>

namespace zqv {

/// Takes the read-only attribute from a file or folder. `report` says whether one that is not there is logged. False
/// when the attributes cannot be read, for whatever reason, or set.
bool RemoveReadOnly(const std::string &path, bool report);

}  // namespace zqv
