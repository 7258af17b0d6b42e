#include "services/files/copy.h"

#include "base/path.h"
#include "runtime/copy_cancel.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "services/files/attributes.h"
#include "services/files/create.h"
#include "services/files/error_text.h"
#include "services/files/existence.h"
#include "services/files/held_folder.h"
#include "services/files/search.h"

namespace zqv {

namespace {

/// The system's code of a path that it does not follow over a link (ERROR_UNTRUSTED_MOUNT_POINT).
constexpr LONG kUntrustedLink = 448;

/// A folder's part of a copy.
struct Part {
  std::string source;
  std::string destination;
  std::string pattern;
  bool recurse;
  bool named = false;           ///< the caller of the library's operation has named the folders; they may be links
  LONG barred = ERROR_SUCCESS;  ///< if it is another code: why nothing may be written
  const CopySteps *steps = nullptr;
};

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

/// Asked before each file, so a look at the attributes settles the usual case, that there is no marker: a search costs
/// several times as much.
bool IsMarkerThere(const std::string &marker) {
  if (!IsTooLong(marker) && GetFileAttributesA(marker.c_str()) == INVALID_FILE_ATTRIBUTES &&
      IsNotFound(static_cast<LONG>(GetLastError()))) {
    return false;
  }
  return iwiFileExists(marker);
}

/// iwiCopyFile. `barred`, if it is no ERROR_SUCCESS, says why the target must not be touched: copying fails with it.
ResultCode CopyOneFile(bool skipExistenceCheck, const std::string &source, const std::string &destination,
                       const std::string &name, LONG barred) {
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
  LONG error = barred;
  if (error == ERROR_SUCCESS) {
    RemoveReadOnly(to, false);
    // The call itself expects the flag to change meanwhile; its type does not say so.
    BOOL *const cancel = const_cast<BOOL *>(&copyCancelled);
    if (CopyFileExA(from.c_str(), to.c_str(), nullptr, nullptr, cancel, 0) == FALSE) {
      error = static_cast<LONG>(GetLastError());
    }
  }
  if (error != ERROR_SUCCESS) {
    const std::string text = error == ERROR_CANCELLED ? "ERROR_CANCELLED" : ErrorText(error);
    Log("***Error %s copying '%s'", text.c_str(), name.empty() ? source.c_str() : name.c_str());
    return ERROR_INSTALL_FAILURE;
  }
  RemoveReadOnly(to, true);
  return ERROR_SUCCESS;
}

ResultCode CopyPart(Part part);

/// One file of a part, with the steps around it.
ResultCode CopyFileOf(const Part &part, const char *name) {
  const std::string to = part.destination + "\\" + name;
  const ResultCode before = part.steps != nullptr ? part.steps->beforeFile(to) : static_cast<ResultCode>(ERROR_SUCCESS);
  const ResultCode result =
      before == ERROR_SUCCESS ? CopyOneFile(true, part.source, part.destination, name, part.barred) : before;
  if (part.steps != nullptr) {
    part.steps->afterFile(to);
  }
  return result;
}

ResultCode CopyFiles(const Part &part, LONG sourceBarred) {
  ResultCode result = ERROR_SUCCESS;
  Search search(part.source + "\\" + part.pattern, sourceBarred);
  while (search.Next()) {
    if (!search.IsFolder()) {
      Accumulate(result, search.LeadsElsewhere() ? RefuseName(search.Name()) : CopyFileOf(part, search.Name()));
    }
  }
  return search.Failed(8) ? ERROR_INSTALL_FAILURE : result;
}

/// The system's limit on the length of a path bounds the depth of this recursion.
ResultCode CopySubfolders(const Part &part, LONG sourceBarred) {
  ResultCode result = ERROR_SUCCESS;
  Search search(part.source + "\\*", sourceBarred);
  while (search.Next()) {
    if (search.IsFolder() && !search.IsDots() && !search.IsLink()) {
      Accumulate(result, search.IsSubfolder() ? CopyPart({.source = part.source + "\\" + search.Name(),
                                                          .destination = part.destination + "\\" + search.Name(),
                                                          .pattern = part.pattern,
                                                          .recurse = true,
                                                          .barred = part.barred,
                                                          .steps = part.steps})
                                              : RefuseName(search.Name()));
    }
  }
  return search.Failed(9) ? ERROR_INSTALL_FAILURE : result;
}

/// Why nothing may be written to the folder of a copy, if it is no ERROR_SUCCESS. One that is not there has the code
/// that copying a file to it would end with.
LONG WhyBarred(const HeldFolder &destination, bool mayBeLink) {
  if (destination.IsLink() && !mayBeLink) {
    return kUntrustedLink;
  }
  return destination.Error() == ERROR_FILE_NOT_FOUND ? ERROR_PATH_NOT_FOUND : destination.Error();
}

ResultCode CopyPart(Part part) {
  const HeldFolder source(Trimmed(part.source));
  if (source.IsLink() && !part.named) {
    return ERROR_SUCCESS;  // it was none when the search found it
  }
  if (part.recurse) {
    Log("Copying pattern '%s' from tree '%s\\' to '%s\\'", part.pattern.c_str(), part.source.c_str(),
        part.destination.c_str());
  } else {
    Log("Copying pattern '%s' from '%s\\' to '%s\\'", part.pattern.c_str(), part.source.c_str(),
        part.destination.c_str());
  }
  HeldFolder destination;
  if (part.barred == ERROR_SUCCESS) {
    const ResultCode before =
        part.steps != nullptr ? part.steps->beforeFolder(part.destination) : static_cast<ResultCode>(ERROR_SUCCESS);
    if (before != ERROR_SUCCESS) {
      return before;
    }
    CreateTargetFolder(part.destination);
    destination = HeldFolder(Trimmed(part.destination));
    part.barred = WhyBarred(destination, part.named);
  } else {
    Log("***Error %s creating '%s'", ErrorText(part.barred).c_str(), part.destination.c_str());
  }
  iwiTidyPath(kWithoutBackslash, part.source);
  iwiTidyPath(kWithoutBackslash, part.destination);
  ResultCode result = CopyFiles(part, source.Error());
  if (part.recurse) {
    Accumulate(result, CopySubfolders(part, source.Error()));
  }
  return result;
}

}  // namespace

ResultCode iwiCopyPattern(const std::string &source, const std::string &destination, const std::string &pattern,
                          bool recurse, const CopySteps *steps) {
  return CopyPart({.source = source,
                   .destination = destination,
                   .pattern = pattern,
                   .recurse = recurse,
                   .named = true,
                   .steps = steps});
}

ResultCode iwiCopyFile(bool skipExistenceCheck, const std::string &source, const std::string &destination,
                       const std::string &name) {
  return CopyOneFile(skipExistenceCheck, source, destination, name, ERROR_SUCCESS);
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
