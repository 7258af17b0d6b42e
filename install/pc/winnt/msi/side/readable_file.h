#pragma once

#include <string>
#include <vector>

#include "platform/owner.h"

namespace zqv {

/// Opens a file to be read, its bytes as they are; `file` stays empty where there is none. False, with a line, when one
/// that is there, or may be, cannot be opened.
[[nodiscard]] bool OpenIfThere(const std::string &path, OwnedStream &file);

/// Reads the lines of a text, without what breaks them; none where there is no such file. False, with a line, when it
/// cannot be read to its end.
[[nodiscard]] bool ReadLines(const std::string &path, std::vector<std::string> &lines);

}  // namespace zqv
