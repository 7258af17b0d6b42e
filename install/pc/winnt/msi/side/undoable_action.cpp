#include "side/undoable_action.h"

#include "base/folder_rule.h"
#include "base/path.h"
#include "runtime/log.h"
#include "runtime/phase.h"
#include "runtime/property.h"
#include "services/files/folder_check.h"

namespace zqv {

namespace {

bool FindHome(std::string &home) {
  const char *const name = NameOf(Kept::programFolder);
  std::string folder;
  if (!GetFolderProperty(name, folder) || !JudgeFolder(folder, name)) {
    return false;
  }
  if (IsRoot(folder)) {
    Log("***Invalid folder '%s' in '%s'", folder.c_str(), name);
    return false;
  }
  home = Trimmed(folder);
  return true;
}

ResultCode RunPhase(const UndoableAction &action, Phase phase, bool whole, const std::string &home) {
  Undo undo(action.undoName, home);
  switch (phase) {
    case Phase::scriptGeneration:
      if (whole) {
        return ResultOf(action.stackRemoval(home));
      }
      return undo.Clear() ? action.plan(home) : static_cast<ResultCode>(ERROR_INSTALL_FAILURE);
    case Phase::deferred:
      if (whole) {
        LogLine("All of the product is removed; left to the installer");
        return ERROR_SUCCESS;
      }
      return action.execute(home, undo);
    case Phase::rollback:
      return ResultOf(undo.PutBack());
    case Phase::commit:
      break;
  }
  return ResultOf(undo.Clear());
}

}  // namespace

ResultCode RunUndoable(const UndoableAction &action) {
  const Phase phase = AnnouncePhaseOrCommit();
  std::string home;
  std::string removal;
  if (!FindHome(home) || !GetProperty("ZQVREMOVE", removal)) {
    return ERROR_INSTALL_FAILURE;
  }
  return RunPhase(action, phase, removal == "1", home);
}

}  // namespace zqv
