#include "services/files/attributes.h"

#include "runtime/log.h"
#include "services/files/error_text.h"
#include "services/files/search.h"

namespace zqv {

bool RemoveReadOnly(const std::string &path, bool report) {
  const DWORD attributes = GetFileAttributesA(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) {
    const LONG error = static_cast<LONG>(GetLastError());
    if (error != ERROR_FILE_NOT_FOUND && error != ERROR_PATH_NOT_FOUND) {
      Log("***Error %s getting attributes '%s'", ErrorText(error).c_str(), path.c_str());
    } else if (report) {
      Log("RemoveReadOnly: %s '%s' not found", error == ERROR_FILE_NOT_FOUND ? "File" : "Path", path.c_str());
    }
    return false;
  }
  if ((attributes & FILE_ATTRIBUTE_READONLY) == 0) {
    return true;
  }
  const DWORD writable = attributes & ~FILE_ATTRIBUTE_READONLY;
  if (SetFileAttributesA(path.c_str(), writable) == FALSE) {
    const LONG error = static_cast<LONG>(GetLastError());
    Log("***Error %s setting attributes '%s'", ErrorText(error).c_str(), path.c_str());
    return false;
  }
  Log("Set attributes 0x%8.8lx '%s'", static_cast<unsigned long>(writable), path.c_str());
  return true;
}

bool AskAttributes(const std::string &path, DWORD &attributes) {
  attributes = GetFileAttributesA(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) {
    const LONG error = static_cast<LONG>(GetLastError());
    if (!IsNotFound(error)) {
      Log("***Error %s getting attributes '%s'", ErrorText(error).c_str(), path.c_str());
      return false;
    }
  }
  return true;
}

bool AskFolder(const std::string &path, bool &isThere) {
  DWORD attributes = INVALID_FILE_ATTRIBUTES;
  const bool asked = AskAttributes(path, attributes);
  isThere = asked && attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  return asked;
}

}  // namespace zqv
