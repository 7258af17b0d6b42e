#include "previous/delete_previous.h"

#include <string>

#include "base/code_page.h"
#include "base/folder_rule.h"
#include "previous/base_component.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "services/files/existence.h"
#include "services/removal/deletion_guard.h"
#include "services/removal/stacked_tree.h"
#include "services/tables/remove_file.h"

namespace zqv {

namespace {

constexpr int kWhenInstalled = 1;

bool ReadFolder(const char *property, std::string &folder) {
  std::string value;
  const bool read = GetProperty(property, value);
  folder = TidiedFolder(value);
  return read;
}

}  // namespace

ResultCode DeletePrevious() {
  std::string previous;
  std::string program;
  std::string data;
  std::string previousData;
  if (!ReadFolder("ZQVPREVPGM", previous)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (previous.empty()) {
    return ERROR_SUCCESS;
  }
  if (!ReadFolder("ZQVPGMFOLDER", program)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (EqualName(previous, program)) {
    LogLine("Previous version is in the same folder");
    return ERROR_SUCCESS;
  }
  DeletionGuard guard;
  if (!ReadFolder("ZQVDATFOLDER", data) || !ReadFolder("ZQVPREVDAT", previousData) || !guard.Prepare()) {
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
