#include "services/files/existence.h"

#include "base/path.h"
#include "base/text.h"
#include "runtime/log.h"
#include "services/files/search.h"

namespace zqv {

int iwiFileExists(const std::string &path) {
  if (path.find('\\') == std::string::npos) {
    return 0;
  }
  const std::string_view name = SplitAtLastBackslash(path).name;
  Search search(path);
  while (search.Next()) {
    if (search.IsFile() && EqualNoCase(search.Name(), name)) {
      return 1;
    }
  }
  search.Failed(1);
  return 0;
}

int iwiFolderExists(const std::string &path) {
  const std::string tidy = Trimmed(path);
  const std::string_view name = SplitAtLastBackslash(tidy).name;
  Log("Looking for: '%s'", tidy.c_str());
  Search search(tidy);
  while (search.Next()) {
    if (!search.IsFolder()) {
      Log("Found file: '%s'", search.Name());
      return 0;
    }
    Log("Found directory: '%s'", search.Name());
    if (EqualNoCase(search.Name(), name)) {
      return 1;
    }
  }
  search.Failed(3);
  return 0;
}

int iwiIsFolderEmpty(const std::string &folder) {
  Search search(folder + "\\*");
  while (search.Next()) {
    if (!search.IsDots()) {
      return 0;
    }
  }
  return search.Failed(4) ? 0 : 1;
}

int iwiFindFile(const std::string &pattern, std::string *name) {
  Search search(pattern);
  if (search.Next()) {
    if (search.IsFolder()) {
      Log("Dir: '%s'", search.Name());
      return 0;
    }
    Log("File: '%s'", search.Name());
    if (name != nullptr) {
      *name = search.Name();
    }
    return 1;
  }
  if (search.Error() == ERROR_FILE_NOT_FOUND) {
    Log("File not found: '%s'", pattern.c_str());
  } else if (search.Error() == ERROR_PATH_NOT_FOUND) {
    Log("Path not found:: '%s'", pattern.c_str());
  } else {
    Log("FindFirstFile(%s) failed: '%d'", pattern.c_str(), static_cast<int>(search.Error()));
  }
  return 0;
}

int iwiFindExtension(const std::string &path, std::string &name) {
  const SplitPath split = SplitAtLastBackslash(path);
  const bool cut = path.find('\\') != std::string::npos;
  const std::string folder(cut ? split.folder : path);
  const std::string prefix(cut ? split.name : "dummy");
  Search search(folder + "\\" + prefix + "*");
  while (search.Next()) {
    if (search.IsSubfolder() && StartsWithNoCase(search.Name(), prefix)) {
      name = search.Name();
      Log("Found extension '%s\\%s'", folder.c_str(), name.c_str());
      return 1;
    }
  }
  search.Failed(2);
  Log("Can't find extension '%s\\%s*'", folder.c_str(), prefix.c_str());
  return 0;
}

}  // namespace zqv
