#include "side/source.h"

#include "base/code_page.h"
#include "base/path.h"
#include "platform/msi.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "runtime/session.h"
#include "services/files/attributes.h"
#include "services/files/copy.h"
#include "services/files/folder_check.h"
#include "services/files/source_path.h"

namespace zqv {

namespace {

constexpr char kSource[] = "ZQVSOURCE";
constexpr char kTopDirectory[] = "TARGETDIR";

/// What is copied beside the package, each as a pattern in a folder below the source.
struct MediaFiles {
  const char *folder;
  const char *pattern;
  bool recurse;
};
constexpr MediaFiles kMediaFiles[] = {
    {"", "setup.exe", false}, {"", "*.mst", false}, {"", "readme*", false}, {"licenses", "*", true}};

}  // namespace

bool FindSource(std::string &source) {
  source.clear();
  std::string value;
  for (const char *name : {kSource, "SourceDir"}) {
    if (!GetProperty(name, value)) {
      return false;
    }
    if (!value.empty()) {
      source = iwiTidyPath(kWithBackslash, value);
      return true;
    }
  }
  if (!GetProperty("OriginalDatabase", value)) {
    return false;
  }
  if (std::string folder(SplitAtLastBackslash(value).folder); !folder.empty()) {
    source = iwiTidyPath(kWithBackslash, folder);
  }
  return true;
}

bool IsForEveryone(const std::string &path) {
  if (path.size() > 1 && path[1] == ':' && GetDriveTypeA(path.substr(0, 2).append("\\").c_str()) == DRIVE_REMOTE) {
    Log("***'%s' is on a mapped drive, which the installer's script cannot reach", path.c_str());
    return false;
  }
  return true;
}

bool HandOverSource(std::string &source) {
  return FindSource(source) && JudgeFolder(source, kSource) && IsForEveryone(source) && SetProperty(kSource, source);
}

bool FindHandedSource(std::string &source) {
  return GetFolderProperty(kSource, source) && JudgeFolder(source, kSource);
}

ResultCode ResolveSource() {
  std::string source;
  return ResultOf(FindSourceFolder(kTopDirectory, source) && SetProperty(kSource, iwiTidyPath(kWithBackslash, source)));
}

ResultCode CheckSourceAvailable() {
  std::string source;
  if (!FindSource(source)) {
    return ERROR_INSTALL_FAILURE;
  }
  bool available = false;
  if (!source.empty()) {
    // One that cannot be looked at, which is logged, is not available.
    static_cast<void>(AskFolder(source, available));
  }
  Log("Source '%s' is %savailable", source.c_str(), available ? "" : "not ");
  return ResultOf(SetSwitch("ZQVSOURCEAVAILABLE", available));
}

ResultCode CopyAdminFiles() {
  if (!InRunMode(MSIRUNMODE_ADMIN)) {
    LogLine("No administrative installation; nothing to copy");
    return ERROR_SUCCESS;
  }
  std::string source;
  std::string target;
  if (!FindSource(source) || !JudgeFolder(source, kSource) || !GetFolderProperty(kTopDirectory, target) ||
      !JudgeFolder(target, kTopDirectory)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (EqualName(source, target)) {
    Log("Source and target are '%s'; nothing to copy", target.c_str());
    return ERROR_SUCCESS;
  }
  ResultCode result = ERROR_SUCCESS;
  for (const MediaFiles &files : kMediaFiles) {
    const std::string from = Trimmed(source + files.folder);
    bool isThere = false;
    ResultCode copied = ERROR_INSTALL_FAILURE;
    if (AskFolder(from, isThere)) {
      copied = isThere ? iwiCopyPattern(from, Trimmed(target + files.folder), files.pattern, files.recurse)
                       : static_cast<ResultCode>(ERROR_SUCCESS);
    }
    result = copied != ERROR_SUCCESS ? copied : result;
  }
  return result;
}

}  // namespace zqv
