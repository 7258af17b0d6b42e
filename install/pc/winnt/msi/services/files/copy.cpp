#include "services/files/copy.h"

#include "base/path.h"
#include "runtime/copy_cancel.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "services/files/attributes.h"
#include "services/files/create.h"
#include "services/files/error_text.h"
#include "services/files/existence.h"
#include "services/files/search.h"

namespace zqv {

namespace {

void Accumulate(ResultCode &result, ResultCode code) {
  if (code != ERROR_SUCCESS) {
    result = code;
  }
}

/// An entry that its name does not lead to is a failure, as the system itself would have it, and not tried.
ResultCode RefuseName(const char *name) {
  Log("***Error %s copying '%s'", ErrorText(ERROR_INVALID_NAME).c_str(), name);
  return ERROR_INSTALL_FAILURE;
}

ResultCode CopyFiles(const std::string &source, const std::string &destination, const std::string &pattern) {
  ResultCode result = ERROR_SUCCESS;
  Search search(source + "\\" + pattern);
  while (search.Next()) {
    if (!search.IsFolder()) {
      Accumulate(result, search.LeadsElsewhere() ? RefuseName(search.Name())
                                                 : iwiCopyFile(true, source, destination, search.Name()));
    }
  }
  return search.Failed(8) ? ERROR_INSTALL_FAILURE : result;
}

/// The system's limit on the length of a path bounds the depth of this recursion.
ResultCode CopySubfolders(const std::string &source, const std::string &destination, const std::string &pattern) {
  ResultCode result = ERROR_SUCCESS;
  Search search(source + "\\*");
  while (search.Next()) {
    if (search.IsFolder() && !search.IsDots() && !search.IsLink()) {
      Accumulate(result, search.IsSubfolder() ? iwiCopyPattern(source + "\\" + search.Name(),
                                                               destination + "\\" + search.Name(), pattern, true)
                                              : RefuseName(search.Name()));
    }
  }
  return search.Failed(9) ? ERROR_INSTALL_FAILURE : result;
}

/// Asked before each file, so a look at the attributes settles the usual case, that there is no marker: a search costs
/// several times as much.
bool IsMarkerThere(const std::string &marker) {
  if (!IsTooLong(marker) && GetFileAttributesA(marker.c_str()) == INVALID_FILE_ATTRIBUTES &&
      IsNotFound(static_cast<LONG>(GetLastError()))) {
    return false;
  }
  return iwiFileExists(marker);
}

}  // namespace

ResultCode iwiCopyPattern(const std::string &source, const std::string &destination, const std::string &pattern,
                          bool recurse) {
  if (recurse) {
    Log("Copying pattern '%s' from tree '%s\\' to '%s\\'", pattern.c_str(), source.c_str(), destination.c_str());
  } else {
    Log("Copying pattern '%s' from '%s\\' to '%s\\'", pattern.c_str(), source.c_str(), destination.c_str());
  }
  CreateTargetFolder(destination);
  const std::string from = Trimmed(source);
  const std::string to = Trimmed(destination);
  ResultCode result = CopyFiles(from, to, pattern);
  if (recurse) {
    Accumulate(result, CopySubfolders(from, to, pattern));
  }
  return result;
}

ResultCode iwiCopyFile(bool skipExistenceCheck, const std::string &source, const std::string &destination,
                       const std::string &name) {
  std::string from = source;
  std::string to = destination;
  if (name.empty()) {
    Log("Copying from '%s' to '%s'", source.c_str(), destination.c_str());
  } else {
    from = Trimmed(source + "\\" + name);
    to = Trimmed(destination + "\\" + name);
    Log("Copying '%s' from '%s\\' to '%s\\'", name.c_str(), source.c_str(), destination.c_str());
  }
  if (!skipExistenceCheck && !iwiFileExists(from)) {
    Log("Copy bypassed; source file '%s' does not exist", from.c_str());
    return ERROR_SUCCESS;
  }
  if (iwiIsCopyCancelled()) {
    return ERROR_INSTALL_USEREXIT;
  }
  RemoveReadOnly(to, false);
  // The call itself expects the flag to change meanwhile; its type does not say so.
  BOOL *const cancel = const_cast<BOOL *>(&copyCancelled);
  if (CopyFileExA(from.c_str(), to.c_str(), nullptr, nullptr, cancel, 0) == FALSE) {
    const LONG error = static_cast<LONG>(GetLastError());
    const std::string text = error == ERROR_CANCELLED ? "ERROR_CANCELLED" : ErrorText(error);
    Log("***Error %s copying '%s'", text.c_str(), name.empty() ? source.c_str() : name.c_str());
    return ERROR_INSTALL_FAILURE;
  }
  RemoveReadOnly(to, true);
  return ERROR_SUCCESS;
}

bool iwiIsCopyCancelled() {
  if (copyCancelled == FALSE) {
    const bool known = GetKeptProperty(Kept::tempFolder);
    const std::string &folder = ValueOf(Kept::tempFolder);
    if (!known || (!folder.empty() && IsMarkerThere(folder + "\\" + kCancelMarker))) {
      copyCancelled = TRUE;
    }
  }
  return copyCancelled != FALSE;
}

}  // namespace zqv
