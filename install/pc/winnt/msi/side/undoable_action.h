#pragma once

#include <functional>
#include <string>

#include "base/result_code.h"
#include "side/undo.h"

namespace zqv {

/// An action that writes and deletes files below the program folder, and can take it back. `home` is that folder,
/// without a backslash at its end.
struct UndoableAction {
  const char *undoName;                                       ///< that Undo has it by
  std::function<bool(const std::string &home)> stackRemoval;  ///< where all goes; false: a property cannot be read
  std::function<ResultCode(const std::string &home)> plan;    ///< the immediate pass otherwise
  std::function<ResultCode(const std::string &home, Undo &)> execute;  ///< the deferred pass otherwise
};

/// Runs the pass that the run mode asks for. Where all of the product is removed (ZQVREMOVE) what is there is left to
/// the installer, by rows of its RemoveFile table, and the deferred pass does nothing. A rollback puts back what was
/// there, a commit forgets it. Returns what the pass gives; ERROR_INSTALL_FAILURE when a property cannot be read, the
/// program folder is invalid or the root of a drive or share, or something cannot be put back or forgotten.
ResultCode RunUndoable(const UndoableAction &action);

}  // namespace zqv
