#include "previous/delete_previous.h"

#include <string>

#include "base/code_page.h"
#include "previous/base_component.h"
#include "runtime/log.h"
#include "services/files/existence.h"
#include "services/files/folder_check.h"
#include "services/removal/deletion_guard.h"
#include "services/removal/stacked_tree.h"
#include "services/tables/remove_file.h"

namespace zqv {

bool FindOtherProgramFolder(std::string &folder, DeletionGuard &guard) {
  std::string program;
  if (!GetFolderProperty("ZQVPREVPGM", folder)) {
    return false;
  }
  if (folder.empty()) {
    return true;
  }
  if (!GetFolderProperty("ZQVPGMFOLDER", program)) {
    return false;
  }
  if (EqualName(folder, program)) {
    LogLine("Previous version is in the same folder");
    folder.clear();
    return true;
  }
  if (!guard.Prepare()) {
    return false;
  }
  if (!guard.MayDeleteBelow(folder)) {
    folder.clear();
  }
  guard.Bar(program);
  return true;
}

ResultCode DeletePrevious() {
  std::string previous;
  DeletionGuard guard;
  if (!FindOtherProgramFolder(previous, guard)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (previous.empty()) {
    return ERROR_SUCCESS;
  }
  for (const char *name : {"ZQVDATFOLDER", "ZQVPREVDAT"}) {
    std::string kept;
    if (!GetFolderProperty(name, kept)) {
      return ERROR_INSTALL_FAILURE;
    }
    guard.Bar(kept);
  }
  for (const char *name : kProgramFolders) {
    const std::string folder = previous + name;
    if (iwiFolderExists(folder) && guard.MayDeleteBelow(folder)) {
      StackTree(folder, kBaseComponent, kWhenInstalled);
    }
  }
  static_cast<void>(iwiStackFolderForDeletion(previous, kBaseComponent, kWhenInstalled));
  return ERROR_SUCCESS;
}

}  // namespace zqv
