#include "platform/c_file.h"

namespace zqv {

std::FILE *OpenCFile(const char *path, const char *mode) { return std::fopen(path, mode); }

}  // namespace zqv
