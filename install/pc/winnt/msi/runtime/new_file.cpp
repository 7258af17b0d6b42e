#include "runtime/new_file.h"

#include "platform/owner.h"
#include "runtime/log.h"

namespace zqv {

std::string iwiCreateNewFile(const std::string &path) {
  if (path.empty()) {
    return {};
  }
  OwnedFile file(CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
  const LONG error = static_cast<LONG>(GetLastError());
  if (file) {
    file.Reset();
    Log("Created '%s'", path.c_str());
    return path;
  }
  if (error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS) {
    Log("'%s' already exists", path.c_str());
  } else {
    Log("***Error %d (0x%8.8lx) creating '%s'", static_cast<int>(error), static_cast<unsigned long>(error),
        path.c_str());
  }
  return {};
}

}  // namespace zqv
