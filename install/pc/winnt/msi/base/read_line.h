#pragma once

#include <cstdio>
#include <string>

namespace zqv {

/// Reads the next line of a text without its line feed, at most `most` characters of it: the rest is then the next
/// line's. Returns how many characters were read, the line feed included; 0, with `line` empty, at the end of the file
/// and after a failure, which std::ferror tells apart.
std::size_t ReadLine(std::FILE *file, std::string &line, std::size_t most = std::string::npos);

}  // namespace zqv
