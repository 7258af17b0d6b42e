#pragma once

#include <string>

#include "base/result_code.h"
#include "services/files/copy.h"
#include "services/files/held_folder.h"

namespace zqv {

/// What a deferred pass changes below the program folder, so that a rollback can put it back. Before each change a line
/// goes into a list, and what would be overwritten or deleted is copied beside it: in a folder of the action's own,
/// below "zqvsave" in the temporary folder. Paths are full ones; those that are not below the program folder are
/// refused.
class Undo {
 public:
  /// `name` is that of the action's own folder, `home` the program folder without a backslash at its end.
  Undo(const char *name, std::string home);

  /// Deletes list and copies: in the immediate pass those of an earlier run, which must not lead a rollback of this
  /// one, and in a commit. False, with a line, when they cannot be deleted.
  [[nodiscard]] bool Clear() const;

  // Of the deferred pass. The results are ERROR_SUCCESS or what the change has to be given up with:
  // ERROR_INSTALL_FAILURE, or ERROR_INSTALL_USEREXIT when copying was cancelled.

  /// Before a file is written.
  [[nodiscard]] ResultCode KeepFile(const std::string &path);

  /// Before a folder is made, with the folders on the way to it. One that is there is left alone.
  [[nodiscard]] ResultCode KeepFolder(const std::string &path);

  /// Deletes a file, at once or not at all: what waits for a restart could not be taken back. One that cannot be
  /// deleted is logged, and stays.
  [[nodiscard]] ResultCode DeleteKept(const std::string &path);

  /// Deletes a folder if it is empty. One that cannot be deleted is logged, and stays.
  [[nodiscard]] ResultCode RemoveEmptyFolder(const std::string &path);

  // Of the rollback.

  /// Undoes what the list names, from the last line to the first, then clears it. What cannot be put back is told; then
  /// the list and the copies stay, and it is false. So it is when the list cannot be read.
  [[nodiscard]] bool PutBack() const;

 private:
  [[nodiscard]] bool Enter();
  [[nodiscard]] bool PathOf(std::string_view below, std::string &path) const;
  [[nodiscard]] ResultCode Note(const std::string &entry, const std::string &path);
  [[nodiscard]] bool PutBackOne(const std::string &folder, const std::string &line) const;

  std::string name_;
  std::string home_;
  std::string folder_;  ///< empty until it has been entered
  HeldFolder heldTop_;
  HeldFolder held_;
  int copies_ = 0;
};

}  // namespace zqv
