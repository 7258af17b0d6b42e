#pragma once

#include <string>

#include "base/result_code.h"

namespace zqv {

/// Where the installation's folders go: the directories that the package's Directory table knows by the names of
/// properties.

/// The names of the three folders.
struct FolderNames {
  const char *choice;     ///< the property by which a user chooses the folder
  const char *directory;  ///< the directory of the package, and the property of its name
};
inline constexpr FolderNames kProgramFolder{"PGMFOLDER", "ZQVPGMFOLDER"};
inline constexpr FolderNames kDataFolder{"DATFOLDER", "ZQVDATFOLDER"};
inline constexpr FolderNames kLogFolder{"LOGFOLDER", "ZQVLOGFOLDER"};

/// The folder of logs below a tidied data folder.
std::string LogFolderBelow(const std::string &dataFolder);

/// What became of a placing.
enum class Placing {
  placed,
  invalid,  ///< no folder could be there; told, and nothing is set
  failed,   ///< a call failed, which is told
};

/// Finds out whether the engine has done its costing, for a product that is not installed yet: then a directory has to
/// be moved by MsiSetTargetPath, and what lies below it moves along. False when a property cannot be read.
[[nodiscard]] bool AskCosting(bool &movesDirectories);

/// Makes a tidied folder that is not empty the place of a directory: by MsiSetTargetPath where the engine moves
/// directories, and in any case as the property of that name. `source` is the name of what the folder came from.
[[nodiscard]] Placing PlaceFolder(const char *directory, const std::string &folder, const char *source);

}  // namespace zqv
