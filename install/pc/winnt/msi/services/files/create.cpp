#include "services/files/create.h"

#include <algorithm>

#include "base/path.h"
#include "runtime/log.h"
#include "services/files/error_text.h"

namespace zqv {

namespace {

/// Where the folders of a tree begin: the index behind "C:", or behind "\\server\share"; npos for any other path.
std::size_t FirstFolder(const std::string &path) {
  if (path.size() >= 2 && path[1] == ':') {
    return 2;
  }
  if (!path.starts_with("\\\\")) {
    return std::string::npos;
  }
  const std::size_t share = NextBackslash(path, 2);
  return share == std::string::npos ? share : NextBackslash(path, share + 1);
}

/// Where the first folder of a copy's target begins: behind "C:\" or "\\server\"; npos where there is no such
/// beginning; 0 for any other path.
std::size_t FirstTargetFolder(const std::string &path) {
  const bool ofServer = path.starts_with("\\\\");
  if (!ofServer && (path.size() < 2 || path[1] != ':')) {
    return 0;
  }
  const std::size_t root = NextBackslash(path, ofServer ? 2 : 0);
  return root == std::string::npos ? root : root + 1;
}

/// Makes one folder; ERROR_ALREADY_EXISTS, too, for a name without a backslash, which is none to be made.
LONG CreateFolder(const std::string &folder) {
  if (NextBackslash(folder) == std::string::npos) {
    return ERROR_ALREADY_EXISTS;
  }
  if (CreateDirectoryA(folder.c_str(), nullptr) == FALSE) {
    return static_cast<LONG>(GetLastError());
  }
  Log("Created '%s'", folder.c_str());
  return ERROR_SUCCESS;
}

}  // namespace

bool iwiCreateFolderTree(const std::string &path) {
  bool nothingMade = true;
  const std::size_t first = FirstFolder(path);
  if (first == std::string::npos) {
    return nothingMade;
  }
  for (std::size_t end = NextBackslash(path, first + 1); end != std::string::npos; end = NextBackslash(path, end + 1)) {
    const std::string folder = path.substr(0, end);
    const LONG error = CreateFolder(folder);
    if (error == ERROR_SUCCESS) {
      nothingMade = false;
    } else if (error != ERROR_ALREADY_EXISTS) {
      Log("Couldn't create '%s' %d", folder.c_str(), static_cast<int>(error));
    }
  }
  return nothingMade;
}

void CreateTargetFolder(const std::string &path) {
  std::size_t at = FirstTargetFolder(path);
  if (at >= path.size()) {
    return;
  }
  while (at <= path.size()) {
    const std::size_t end = std::min(NextBackslash(path, at), path.size());
    const std::string folder = path.substr(0, end);
    const LONG error = CreateFolder(folder);
    if (error != ERROR_SUCCESS && error != ERROR_ALREADY_EXISTS) {
      Log("***Error %s creating '%s'", ErrorText(error).c_str(), folder.c_str());
    }
    at = end + 1;
  }
}

}  // namespace zqv
