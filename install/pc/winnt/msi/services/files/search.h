#pragma once

#include <string>

#include "platform/owner.h"
#include "platform/win32.h"

namespace zqv {

/// A walk over the entries of a folder that a path or pattern matches.
///
///     Search search(folder + "\\*");
///     while (search.Next()) { … search.Name() … }
///     if (search.Failed(7)) { … }
class Search {
 public:
  /// Asks nothing of the system yet. Wildcards count in the last element of `path`. `barred`, if it is no
  /// ERROR_SUCCESS, says why nothing that is found may be touched: a search that would begin fails with it instead.
  explicit Search(std::string path, LONG barred = ERROR_SUCCESS) : path_(std::move(path)), barred_(barred) {}

  /// Moves to the first or next entry. False when there is none or the search failed.
  bool Next();

  // The entry that Next moved to.

  const char *Name() const { return entry_.cFileName; }
  bool IsFolder() const { return (entry_.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }
  bool IsDots() const;

  /// A folder that leads elsewhere: a junction, a mount point or a symbolic link.
  bool IsLink() const { return IsFolder() && (entry_.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0; }

  /// A file, or a folder below the searched one, that its name leads to.
  bool IsFile() const { return !IsFolder() && IsTrueName(); }
  bool IsSubfolder() const { return IsFolder() && IsTrueName(); }

  /// True for a name that, placed in a path, leads to another place than this entry, even out of the folder. An entry
  /// that is neither this nor a file or folder by its name is one that no path leads to.
  bool LeadsElsewhere() const;

  /// Why the search ended: ERROR_SUCCESS when it gave all entries, or has not ended.
  LONG Error() const { return error_; }

  /// True, with a log line that shows `number`, when the search ended for another reason than that there is no such
  /// entry or folder.
  bool Failed(int number) const;

 private:
  bool IsTrueName() const;

  std::string path_;
  LONG barred_;
  OwnedSearch search_;
  WIN32_FIND_DATAA entry_ = {};
  LONG error_ = ERROR_SUCCESS;
};

/// True for the codes that say that a file, a folder or a name is not there: 2, 3 and 123.
bool IsNotFound(LONG error);

/// The code of a path that is too long for the system (ERROR_FILENAME_EXCED_RANGE). The system itself reports such a
/// path as one that is not there, and that would be taken for success.
constexpr LONG kPathTooLong = 206;
inline bool IsTooLong(const std::string &path) { return path.size() >= MAX_PATH; }

/// True for a folder that is a link. Asks the system once; false also when it cannot say.
bool IsFolderLink(const std::string &path);

}  // namespace zqv
