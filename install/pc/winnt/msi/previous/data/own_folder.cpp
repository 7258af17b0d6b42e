#include "previous/data/own_folder.h"

#include "base/folder_rule.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "services/files/create.h"
#include "services/files/delete.h"
#include "services/files/existence.h"

namespace zqv {

bool FindOwnFolder(const char *name, std::string &path) {
  if (!GetKeptProperty(Kept::tempFolder)) {
    return false;
  }
  const std::string &temporary = ValueOf(Kept::tempFolder);
  if (!IsValidFolder(TidiedFolder(temporary))) {
    Log("***No temporary folder for '%s'", name);
    return false;
  }
  path = temporary + "\\" + name;
  return true;
}

bool ClearOwnFolder(const char *name, std::string &path) {
  if (!FindOwnFolder(name, path)) {
    return false;
  }
  const bool deleted = iwiDeletePattern(
      {.execute = true, .path = path + "\\*", .deleteFiles = true, .removeFolders = true, .recurse = true});
  // A file that is in use counts as deleted, but keeps the folder.
  if (!deleted || iwiFolderExists(path)) {
    Log("***Folder '%s' cannot be deleted", path.c_str());
    return false;
  }
  return true;
}

bool HoldOwnFolder(const std::string &path, HeldFolder &held) {
  held = HeldFolder(path);
  if (held.Error() == ERROR_SUCCESS && !held.IsLink()) {
    return true;
  }
  Log("***Can't use folder '%s' %d", path.c_str(), static_cast<int>(held.Error()));
  return false;
}

bool EnterOwnFolder(const std::string &path, HeldFolder &held) {
  CreateTargetFolder(path);
  return HoldOwnFolder(path, held);
}

}  // namespace zqv
