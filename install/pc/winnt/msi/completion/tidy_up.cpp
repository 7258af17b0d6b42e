#include "completion/tidy_up.h"

#include <string>

#include "base/path.h"
#include "previous/delete_previous.h"
#include "runtime/phase.h"
#include "runtime/property.h"
#include "services/files/delete_entry.h"
#include "services/removal/deletion_guard.h"

namespace zqv {

namespace {

constexpr char kHandedFolder[] = "ZQVTIDYFOLDER";

ResultCode Plan() {
  std::string folder;
  DeletionGuard guard;
  return ResultOf(FindOtherProgramFolder(folder, guard) && SetProperty(kHandedFolder, folder));
}

ResultCode RemoveFolders() {
  std::string folder;
  if (!GetTrimmedProperty(kHandedFolder, folder)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (!IsAbsoluteFolder(folder)) {
    return ERROR_SUCCESS;
  }
  // What cannot be removed is logged, and stays.
  for (const char *name : kProgramFolders) {
    static_cast<void>(iwiRemoveFolderNow(folder + "\\" + name));
  }
  static_cast<void>(iwiRemoveFolderNow(folder));
  return ERROR_SUCCESS;
}

}  // namespace

ResultCode InstallTidyUp() {
  switch (AnnouncePhase()) {
    case Phase::scriptGeneration:
      return Plan();
    case Phase::deferred:
      return RemoveFolders();
    case Phase::rollback:
    case Phase::commit:
      break;
  }
  return ERROR_SUCCESS;
}

}  // namespace zqv
