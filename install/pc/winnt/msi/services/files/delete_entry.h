#pragma once

#include <string>

namespace zqv {

/// Deletion of one file or one folder.

/// What is to be deleted, and how:
/// - `execute` alone: it is deleted, its path is shown as action data and kTicksPerUnit of progress are reported;
/// - `execute` and `countOnly`: nothing is touched, the ticks are added to the total;
/// - without `execute` the deletion is left to the installer, as a row of its RemoveFile table.
struct DeletionRequest {
  bool countOnly = false;
  bool execute = false;
  int *ticks = nullptr;  ///< the total that counting adds to; it stays at the largest number. May be null
  std::string path;
  bool report = false;    ///< whether something that is not there is logged, and for a folder is a failure
  int *error = nullptr;   ///< gets the system's code of an executed deletion, 0 for success. May be null
  std::string component;  ///< the row's component
  int installMode = 0;    ///< the row's, as remove_file.h has it

  // Of iwiDeletePattern only; without any of the three it does nothing.

  bool deleteFiles = false;    ///< the files that the path's last element matches
  bool removeFolders = false;  ///< the folder, if it is empty
  bool recurse = false;        ///< the same in all folders below it
};

/// Deletes the file of exactly this path. One that is in use or protected is left to the next restart, which is a
/// success. A row is added only for a file that exists. False for a failure.
[[nodiscard]] bool DeleteOneFile(const DeletionRequest &request);

/// Deletes a folder if it is empty, or if it is a link, whatever that leads to. One that is in use is tried again for
/// 20 seconds. With neither `execute` nor `countOnly` nothing is done. False for a failure.
[[nodiscard]] bool iwiDeleteFolder(const DeletionRequest &request);

/// Leaves a file to be deleted by the next restart. `error`, if given, gets the system's code. False for a failure; a
/// file that is not there is none.
[[nodiscard]] bool iwiDeleteAtReboot(const std::string &path, bool report, int *error);

/// Deletes a folder if it is empty, in one try, with no progress and no row. False for a failure; a folder that is
/// not there or not empty is none.
[[nodiscard]] bool iwiRemoveFolderNow(const std::string &path);

}  // namespace zqv
