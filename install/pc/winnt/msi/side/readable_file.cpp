#include "side/readable_file.h"

#include "base/read_line.h"
#include "base/text.h"
#include "platform/c_file.h"
#include "runtime/log.h"
#include "services/files/attributes.h"

namespace zqv {

bool OpenIfThere(const std::string &path, OwnedStream &file) {
  DWORD attributes = 0;
  if (!AskAttributes(path, attributes)) {
    return false;
  }
  if (attributes != INVALID_FILE_ATTRIBUTES) {
    file.Reset(OpenCFile(path.c_str(), "rb"));
    if (!file) {
      Log("***Can't read '%s'", path.c_str());
      return false;
    }
  }
  return true;
}

bool ReadLines(const std::string &path, std::vector<std::string> &lines) {
  OwnedStream file;
  if (!OpenIfThere(path, file)) {
    return false;
  }
  if (!file) {
    return true;
  }
  std::string line;
  while (ReadLine(file.Get(), line) > 0) {
    lines.emplace_back(CutAtLineBreak(line));
  }
  if (std::ferror(file.Get()) != 0) {
    Log("***Can't read '%s'", path.c_str());
    return false;
  }
  return true;
}

}  // namespace zqv
