#include "services/files/folder_check.h"

#include "base/folder_rule.h"
#include "runtime/log.h"
#include "runtime/property.h"

namespace zqv {

bool GetFolderProperty(const char *name, std::string &folder) {
  std::string value;
  const bool read = GetProperty(name, value);
  folder = TidiedFolder(value);
  return read;
}

bool JudgeFolder(const std::string &folder, const char *source) {
  if (IsValidFolder(folder)) {
    return true;
  }
  Log("***Invalid folder '%s' in '%s'", folder.c_str(), source);
  return false;
}

}  // namespace zqv
