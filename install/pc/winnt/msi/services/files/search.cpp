#include "services/files/search.h"

#include <string_view>

#include "base/code_page.h"
#include "base/path.h"
#include "runtime/log.h"

namespace zqv {

bool Search::Next() {
  if (IsTooLong(path_)) {
    error_ = kPathTooLong;
    return false;
  }
  const bool begun = static_cast<bool>(search_);
  if (!begun) {
    search_.Reset(FindFirstFileA(path_.c_str(), &entry_));
    if (search_ && barred_ != ERROR_SUCCESS) {
      search_.Reset();
      error_ = barred_;
      return false;
    }
  }
  const bool found = begun ? FindNextFileA(search_.Get(), &entry_) != FALSE : static_cast<bool>(search_);
  if (!found) {
    const LONG error = static_cast<LONG>(GetLastError());
    error_ = begun && error == ERROR_NO_MORE_FILES ? ERROR_SUCCESS : error;
  }
  return found;
}

bool Search::IsDots() const {
  const std::string_view name = Name();
  return name == "." || name == "..";
}

/// The system's translation to the ANSI code page can put separators into a name, and a path loses the blanks and dots
/// at its end. Half a character there would take the backslash behind it for its other half.
bool Search::LeadsElsewhere() const {
  const std::string_view name = Name();
  const std::string followed = std::string(name) + "\\";
  return name.empty() || name.back() == '.' || name.back() == ' ' || NextBackslash(followed) != name.size() ||
         name.find_first_of("/:") != std::string_view::npos;
}

/// What the code page has no character for, the translation replaces by wildcards, above all by "?".
bool Search::IsTrueName() const {
  const std::string_view name = Name();
  return !LeadsElsewhere() && name.find_first_of("*?\"<>") == std::string_view::npos &&
         FindCharacter(name, '|') == std::string_view::npos;
}

bool Search::Failed(int number) const {
  if (error_ == ERROR_SUCCESS || IsNotFound(error_)) {
    return false;
  }
  Log("***FindFirstFile(%d) error %d, path '%s'", number, static_cast<int>(error_), path_.c_str());
  return true;
}

bool IsNotFound(LONG error) {
  return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND || error == ERROR_INVALID_NAME;
}

bool IsFolderLink(const std::string &path) {
  constexpr DWORD kBoth = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
  const DWORD attributes = GetFileAttributesA(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & kBoth) == kBoth;
}

}  // namespace zqv
