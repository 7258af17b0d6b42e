#include "services/files/folder_check.h"

#include "base/folder_rule.h"
#include "runtime/log.h"

namespace zqv {

bool JudgeFolder(const std::string &folder, const char *source) {
  if (IsValidFolder(folder)) {
    return true;
  }
  Log("***Invalid folder '%s' in '%s'", folder.c_str(), source);
  return false;
}

}  // namespace zqv
