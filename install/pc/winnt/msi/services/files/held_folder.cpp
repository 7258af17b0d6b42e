#include "services/files/held_folder.h"

#include "services/files/search.h"

namespace zqv {

/// The system looks only at the sharing of handles that may read, write or delete, so this one asks for what a search
/// reads. ("Creating and Opening Files" in the platform's documentation; there, too, how a folder and a link are
/// opened.)
HeldFolder::HeldFolder(const std::string &path) {
  const bool isRoot = path.empty() || path.back() == ':';
  const std::string folder = isRoot ? path + "\\" : path;
  folder_.Reset(CreateFileA(folder.c_str(), FILE_LIST_DIRECTORY, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                            OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  BY_HANDLE_FILE_INFORMATION found;
  if (!folder_ || GetFileInformationByHandle(folder_.Get(), &found) == FALSE) {
    error_ = static_cast<LONG>(GetLastError());
    LetGo();
    return;
  }
  // What the path leads to cannot change any more; and it alone tells of the links of a file system below Wine.
  isLink_ = (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 || IsFolderLink(folder);
}

}  // namespace zqv
