#include "init/folders/placing.h"

#include "platform/msi.h"
#include "runtime/installer_result.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "runtime/session.h"
#include "services/files/folder_check.h"

namespace zqv {

std::string LogFolderBelow(const std::string &dataFolder) { return dataFolder + "log\\"; }

bool AskCosting(bool &movesDirectories) {
  std::string complete;
  std::string installed;
  if (!GetProperty("CostingComplete", complete) || !GetProperty("Installed", installed)) {
    return false;
  }
  movesDirectories = complete == "1" && installed.empty();
  return true;
}

Placing PlaceFolder(const char *directory, const std::string &folder, const char *source) {
  if (!JudgeFolder(folder, source)) {
    return Placing::invalid;
  }
  bool movesDirectories = false;
  if (!AskCosting(movesDirectories)) {
    return Placing::failed;
  }
  if (movesDirectories) {
    ResultCode result = ERROR_SUCCESS;
    const UINT moved = MsiSetTargetPathA(Session().handle, directory, folder.c_str());
    if (iwiCheckMsiResult("MsiSetTargetPath", folder.c_str(), moved, result) != ERROR_SUCCESS) {
      return Placing::failed;
    }
  }
  ForgetKeptFolders();
  return SetProperty(directory, folder) ? Placing::placed : Placing::failed;
}

}  // namespace zqv
