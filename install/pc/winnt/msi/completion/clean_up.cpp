#include "completion/clean_up.h"

#include <string>

#include "base/code_page.h"
#include "base/path.h"
#include "init/primary/save_file.h"
#include "platform/msi.h"
#include "previous/data/own_folder.h"
#include "previous/old_component.h"
#include "previous/old_documentation.h"
#include "running/process_image.h"
#include "runtime/actions/log_actions.h"
#include "runtime/log.h"
#include "runtime/message.h"
#include "runtime/property.h"
#include "runtime/script.h"
#include "runtime/session.h"
#include "runtime/temp_name.h"
#include "services/files/copy.h"
#include "services/files/delete_entry.h"

namespace zqv {

namespace {

void Delete(const std::string &path) { static_cast<void>(DeleteOneFile({.execute = true, .path = path})); }

/// False where the name could not be made, which is logged.
bool DeleteNamed(const std::string &path) {
  if (!path.empty()) {
    Delete(path);
  }
  return !path.empty();
}

/// Finds out whether the installation has numbered files in the temporary folder. False when that cannot be read.
bool AskNumberedFiles(bool &has) {
  std::string number;
  if (!GetKeptProperty(Kept::tempFolder) || !GetProperty("ZQVTEMPFILENUM", number, kCounterLength)) {
    return false;
  }
  const bool isFolder = IsAbsoluteFolder(ValueOf(Kept::tempFolder));
  if (!isFolder) {
    Log("No temporary folder to clean up: '%s'", ValueOf(Kept::tempFolder).c_str());
  }
  has = isFolder && !number.empty();
  return true;
}

/// From here on nobody makes the temporary log anew, not even by the line that tells of its end.
bool EndTempLog() {
  RetireTempLog();
  bool hasFiles = false;
  std::string keep;
  if ((!InDeferredMode() && !SetProperty(NameOf(Kept::tempLog), "")) || !AskNumberedFiles(hasFiles) ||
      !GetProperty("ZQVKEEPTEMPLOG", keep, kCounterLength)) {
    return false;
  }
  if (hasFiles && keep.empty() && !DeleteNamed(TempLogName())) {
    return false;
  }
  if (IsAbsoluteFolder(ValueOf(Kept::tempFolder))) {
    Delete(ValueOf(Kept::tempFolder) + "\\" + kCancelMarker);
  }
  return true;
}

bool DeleteNumberedFiles() {
  FreeMessageLibrary();
  bool hasFiles = false;
  std::string psapi;
  if (!AskNumberedFiles(hasFiles) || !GetTrimmedProperty(kUnpackedPsapi, psapi)) {
    return false;
  }
  if (hasFiles &&
      !(DeleteNamed(MessageLibraryName()) && DeleteNamed(CatalogueName()) && DeleteNamed(ValueListName()))) {
    return false;
  }
  // Whatever else the property may name is none of ours.
  if (!psapi.empty() && EqualName(psapi, ValueOf(Kept::tempFolder) + "\\psapi.dll")) {
    Delete(psapi);
  }
  return true;
}

/// What is left behind by an end that is no success, but for what is saved for the support engineer.
bool DeleteRemains() {
  if (!GetKeptProperty(Kept::tempFolder)) {
    return false;
  }
  if (IsAbsoluteFolder(ValueOf(Kept::tempFolder))) {
    std::string folder;
    static_cast<void>(ClearOwnFolder(kMigrationFolder, folder));
  }
  return DeleteNumberedFiles();
}

/// In the immediate mode. An end is no success where no script has been planned, or nobody has folded the log away.
bool EndImmediately() {
  std::string script;
  std::string log;
  if (!GetProperty(kScript, script) || !GetProperty(NameOf(Kept::tempLog), log)) {
    return false;
  }
  if (!log.empty() && UnSetTempLogPath() != ERROR_SUCCESS) {
    return false;
  }
  if (!EndTempLog()) {
    return false;
  }
  if (!script.empty() && log.empty()) {
    return true;
  }
  if (!DeleteDefaultSaveFile()) {
    return false;
  }
  if (script == kScriptPlanned) {
    LogLine("The rollback cleans up the rest");
    return true;
  }
  return DeleteRemains();
}

}  // namespace

ResultCode CleanUp() {
  if (!InDeferredMode()) {
    return ResultOf(EndImmediately());
  }
  return ResultOf(EndTempLog() && (!InRunMode(MSIRUNMODE_ROLLBACK) || DeleteRemains()));
}

ResultCode CleanUpFinal() { return ResultOf(DeleteNumberedFiles()); }

ResultCode CleanUpSuccess() {
  if (!GetKeptProperty(Kept::tempFolder)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (IsAbsoluteFolder(ValueOf(Kept::tempFolder))) {
    for (const char *name : {kMigrationFolder, kSavedFolder}) {
      std::string folder;
      static_cast<void>(ClearOwnFolder(name, folder));
    }
  }
  for (const char *decision : DocumentationDecisions()) {
    if (!SetProperty(decision, "")) {
      return ERROR_INSTALL_FAILURE;
    }
  }
  for (const OldComponentRow &row : OldComponents()) {
    if (!SetProperty(row.decision, "")) {
      return ERROR_INSTALL_FAILURE;
    }
  }
  return ERROR_SUCCESS;
}

}  // namespace zqv
