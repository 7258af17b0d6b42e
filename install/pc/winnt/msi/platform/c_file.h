#pragma once

#include <cstdio>

namespace zqv {

/// Opens a file with the C library: `fopen`, with its modes and its null answer on failure. The one place where the
/// library asks for a stream, so that a test can stand in for the file system.
std::FILE *OpenCFile(const char *path, const char *mode);

}  // namespace zqv
