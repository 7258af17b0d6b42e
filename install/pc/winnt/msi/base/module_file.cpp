#include "base/module_file.h"

#include "base/path.h"

namespace zqv {

OwnedModule LoadModuleFile(const std::string &path, DWORD flags) {
  if (!IsAbsoluteFolder(SplitAtLastBackslash(path).folder)) {
    SetLastError(ERROR_MOD_NOT_FOUND);
    return {};
  }
  return OwnedModule(LoadLibraryExA(path.c_str(), nullptr, flags));
}

}  // namespace zqv
