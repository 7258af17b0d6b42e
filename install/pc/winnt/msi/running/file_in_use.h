#pragma once

#include <string>

namespace zqv {

/// The library's only test for "running": true when another process has the file open, so that opening it for writing,
/// shared with nobody, fails with a sharing violation; false in any other case, a missing file included. A read-only
/// attribute is taken away for good, which prepares the file for its replacement.
bool iwiIsFileInUse(const std::string &path);

}  // namespace zqv
