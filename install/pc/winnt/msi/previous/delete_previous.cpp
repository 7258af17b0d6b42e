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

ResultCode DeletePrevious() {
  std::string previous;
  std::string program;
  std::string data;
  std::string previousData;
  if (!GetFolderProperty("ZQVPREVPGM", previous)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (previous.empty()) {
    return ERROR_SUCCESS;
  }
  if (!GetFolderProperty("ZQVPGMFOLDER", program)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (EqualName(previous, program)) {
    LogLine("Previous version is in the same folder");
    return ERROR_SUCCESS;
  }
  DeletionGuard guard;
  if (!GetFolderProperty("ZQVDATFOLDER", data) || !GetFolderProperty("ZQVPREVDAT", previousData) || !guard.Prepare()) {
    return ERROR_INSTALL_FAILURE;
  }
  if (!guard.MayDeleteBelow(previous)) {
    return ERROR_SUCCESS;
  }
  for (const std::string &kept : {program, data, previousData}) {
    guard.Bar(kept);
  }
  for (const char *name : {"bin", "uninst", "doc"}) {
    const std::string folder = previous + name;
    if (iwiFolderExists(folder) && guard.MayDeleteBelow(folder)) {
      StackTree(folder, kBaseComponent, kWhenInstalled);
    }
  }
  static_cast<void>(iwiStackFolderForDeletion(previous, kBaseComponent, kWhenInstalled));
  return ERROR_SUCCESS;
}

}  // namespace zqv
