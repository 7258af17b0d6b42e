#pragma once

#include <string>

namespace zqv {

/// True when Windows is to move or delete something at its next start that is the folder itself or lies below it, or is
/// to put something there. `folder` is a path as a property has it; nothing lies below an empty one. A registry that
/// cannot be read is logged, and counts as one that names nothing.
bool IsRestartOwed(const std::string &folder);

}  // namespace zqv
