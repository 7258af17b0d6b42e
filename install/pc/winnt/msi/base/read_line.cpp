#include "base/read_line.h"

namespace zqv {

std::size_t ReadLine(std::FILE *file, std::string &line, std::size_t most) {
  line.clear();
  while (line.size() < most) {
    const int c = std::getc(file);
    if (c == EOF) {
      break;
    }
    if (c == '\n') {
      return line.size() + 1;
    }
    line += static_cast<char>(c);
  }
  return line.size();
}

}  // namespace zqv
