#pragma once

#include <string>

namespace zqv {

/// Makes an empty file where there was none. Returns the path, or an empty text when the file exists already, cannot be
/// made, or `path` is empty.
std::string iwiCreateNewFile(const std::string &path);

}  // namespace zqv
