#include "platform/c_file.h"

std::FILE *OpenCFile(const char *path, const char *mode) { return std::fopen(path, mode); }
