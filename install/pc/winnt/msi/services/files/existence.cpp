#include "services/files/existence.h"

#include "base/code_page.h"
#include "base/path.h"
#include "runtime/log.h"
#include "services/files/search.h"

namespace zqv {

bool iwiFileExists(const std::string &path) {
  const SplitPath split = SplitAtLastBackslash(path);
  if (!split.hasBackslash) {
    return false;
  }
  Search search(path);
  while (search.Next()) {
    if (search.IsFile() && EqualName(search.Name(), split.name)) {
      return true;
    }
  }
  search.Failed(1);
  return false;
}

bool iwiFolderExists(const std::string &path) {
  const std::string tidy = Trimmed(path);
  const std::string_view name = SplitAtLastBackslash(tidy).name;
  Log("Looking for: '%s'", tidy.c_str());
  Search search(tidy);
  while (search.Next()) {
    if (!search.IsFolder()) {
      Log("Found file: '%s'", search.Name());
      return false;
    }
    Log("Found directory: '%s'", search.Name());
    if (EqualName(search.Name(), name)) {
      return true;
    }
  }
  search.Failed(3);
  return false;
}

bool iwiIsFolderEmpty(const std::string &folder) {
  Search search(folder + "\\*");
  while (search.Next()) {
    if (!search.IsDots()) {
      return false;
    }
  }
  return !search.Failed(4);
}

bool iwiFindFile(const std::string &pattern, std::string *name) {
  Search search(pattern);
  if (search.Next()) {
    if (search.IsFolder()) {
      Log("Dir: '%s'", search.Name());
      return false;
    }
    Log("File: '%s'", search.Name());
    if (name != nullptr) {
      *name = search.Name();
    }
    return true;
  }
  if (search.Error() == ERROR_FILE_NOT_FOUND) {
    Log("File not found: '%s'", pattern.c_str());
  } else if (search.Error() == ERROR_PATH_NOT_FOUND) {
    Log("Path not found:: '%s'", pattern.c_str());
  } else {
    Log("FindFirstFile(%s) failed: '%d'", pattern.c_str(), static_cast<int>(search.Error()));
  }
  return false;
}

bool iwiFindExtension(const std::string &path, std::string &name) {
  const SplitPath split = SplitAtLastBackslash(path);
  const std::string folder(split.hasBackslash ? split.folder : path);
  const std::string prefix(split.hasBackslash ? split.name : "dummy");
  Search search(folder + "\\" + prefix + "*");
  while (search.Next()) {
    if (search.IsSubfolder() && StartsWithName(search.Name(), prefix)) {
      name = search.Name();
      Log("Found extension '%s\\%s'", folder.c_str(), name.c_str());
      return true;
    }
  }
  search.Failed(2);
  Log("Can't find extension '%s\\%s*'", folder.c_str(), prefix.c_str());
  return false;
}

}  // namespace zqv
