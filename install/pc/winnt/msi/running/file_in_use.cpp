#include "running/file_in_use.h"

#include "platform/owner.h"
#include "runtime/log.h"

namespace zqv {

// Deliberate: both lines of failing calls spell "Attribues".

bool iwiIsFileInUse(const std::string &path) {
  const DWORD attributes = GetFileAttributesA(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) {
    const LONG error = static_cast<LONG>(GetLastError());
    if (error != ERROR_FILE_NOT_FOUND && error != ERROR_PATH_NOT_FOUND) {
      Log("GetFileAttribues() failed %d '%s'", static_cast<int>(error), path.c_str());
    }
  } else if ((attributes & FILE_ATTRIBUTE_READONLY) != 0 &&
             SetFileAttributesA(path.c_str(), attributes & ~FILE_ATTRIBUTE_READONLY) == FALSE) {
    Log("SetFileAttribues() failed %d '%s'", static_cast<int>(GetLastError()), path.c_str());
  }
  SetLastError(ERROR_SUCCESS);
  const OwnedFile file(
      CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  const bool inUse = !file && GetLastError() == ERROR_SHARING_VIOLATION;
  if (inUse) {
    Log("'%s' is in use", path.c_str());
  } else {
    Log("'%s' is not in use", path.c_str());
  }
  return inUse;
}

}  // namespace zqv
