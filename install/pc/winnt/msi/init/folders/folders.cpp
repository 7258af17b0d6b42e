#include "init/folders/folders.h"

#include <array>
#include <string>

#include "base/code_page.h"
#include "base/folder_rule.h"
#include "base/path.h"
#include "features/answers/response_property.h"
#include "init/folders/placing.h"
#include "previous/previous_installation.h"
#include "runtime/log.h"
#include "runtime/message.h"
#include "runtime/property.h"
#include "runtime/session.h"
#include "services/files/existence.h"
#include "services/files/folder_check.h"
#include "services/system/product_key.h"

namespace zqv {

namespace {

constexpr FolderNames kServerFolder{"SERVERFOLDER", "TARGETDIR"};

/// A directory, and where it is to go.
struct Choice {
  FolderNames names;
  std::string folder;  ///< tidied; empty: it stays
  const char *source;  ///< what a fault is blamed on
};

/// Reads what the user has chosen.
bool ReadChoice(const FolderNames &names, Choice &choice) {
  std::string value;
  if (!GetPropertyWithResponse(names.choice, value)) {
    return false;
  }
  choice = {names, TidiedFolder(value), names.choice};
  return true;
}

void ShowInvalid(const Choice &choice) {
  std::string format;
  if (iwiLoadNlsString(format, message::kInvalidFolder)) {
    std::string text;
    std::ignore =
        FormatInserts(text, format, choice.folder.c_str(), choice.source);  // unfilled, it still says what is wrong
    iiiDisplayMsgBox(text, MB_ICONERROR);
  }
}

/// Places a directory where the user has chosen, if he has. The choice has been judged.
bool Place(const Choice &choice) {
  if (choice.folder.empty()) {
    Log("No value in '%s'; '%s' stays", choice.names.choice, choice.names.directory);
    return true;
  }
  return PlaceFolder(choice.names.directory, choice.folder, choice.source) == Placing::placed;
}

/// Judges all choices before the first is placed, so that one bad folder moves nothing.
template <std::size_t Count>
ResultCode PlaceAll(const std::array<Choice, Count> &choices) {
  for (const Choice &choice : choices) {
    if (!choice.folder.empty() && !JudgeFolder(choice.folder, choice.source)) {
      ShowInvalid(choice);
      return ERROR_INSTALL_FAILURE;
    }
  }
  for (const Choice &choice : choices) {
    if (!Place(choice)) {
      return ERROR_INSTALL_FAILURE;
    }
  }
  return ERROR_SUCCESS;
}

/// Places a directory, if there is a folder for it. One that is invalid is told, and the directory stays.
Placing PlaceIfAny(const Choice &choice) {
  if (choice.folder.empty()) {
    Log("No folder for '%s'; it stays", choice.names.directory);
    return Placing::invalid;
  }
  return PlaceFolder(choice.names.directory, choice.folder, choice.source);
}

/// True when a tidied folder is another one or lies below it.
bool IsBelow(const std::string &folder, const std::string &other) {
  return !other.empty() && StartsWithName(folder, other);
}

/// Where a dialog's recalculation puts a directory: as the user has chosen, else as recorded. `source` is its origin.
bool ChosenOrRecorded(const FolderNames &names, const std::string &recorded, const char *value, Choice &choice) {
  if (!ReadChoice(names, choice)) {
    return false;
  }
  if (choice.folder.empty()) {
    choice.folder = TidiedFolder(recorded);
    choice.source = value;
  }
  return true;
}

}  // namespace

ResultCode SetDirs() {
  std::array<Choice, 3> choices;
  Choice &data = choices[1];
  Choice &log = choices[2];
  if (!ReadChoice(kProgramFolder, choices[0]) || !ReadChoice(kDataFolder, data) || !ReadChoice(kLogFolder, log)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (log.folder.empty() && !data.folder.empty()) {
    log.folder = LogFolderBelow(data.folder);
    log.source = data.source;
  }
  return PlaceAll(choices);
}

ResultCode SetRegistryDirs() {
  const PreviousInstallation &installed = FindPreviousInstallation();
  const struct {
    const char *directory;
    const std::string &recorded;
    const char *value;
  } folders[] = {{kProgramFolder.directory, installed.programFolder, kProgramFolderValue},
                 {kDataFolder.directory, installed.dataFolder, kDataFolderValue},
                 {kLogFolder.directory, installed.logFolder, kLogFolderValue}};
  for (const auto &[directory, recorded, value] : folders) {
    std::string now;
    if (!GetProperty(directory, now)) {
      return ERROR_INSTALL_FAILURE;
    }
    if (now.empty() && !recorded.empty() && PlaceFolder(directory, TidiedFolder(recorded), value) == Placing::failed) {
      return ERROR_INSTALL_FAILURE;
    }
  }
  return ERROR_SUCCESS;
}

ResultCode SetAdminDir() {
  if (!InRunMode(MSIRUNMODE_ADMIN)) {
    LogLine("Not an administrative installation");
    return ERROR_SUCCESS;
  }
  std::array<Choice, 1> choice;
  return ReadChoice(kServerFolder, choice[0]) ? PlaceAll(choice) : ERROR_INSTALL_FAILURE;
}

ResultCode RecalcDatFolder() {
  Choice data;
  std::string oldData;
  std::string oldLog;
  bool movesDirectories = false;
  if (!ChosenOrRecorded(kDataFolder, FindPreviousInstallation().dataFolder, kDataFolderValue, data) ||
      !GetFolderProperty(kDataFolder.directory, oldData) || !GetFolderProperty(kLogFolder.directory, oldLog) ||
      !AskCosting(movesDirectories)) {
    return ERROR_INSTALL_FAILURE;
  }
  const Placing placed = PlaceIfAny(data);
  // The log folder is moved along with the data folder, also one that was chosen elsewhere.
  if (placed == Placing::placed && movesDirectories && !oldLog.empty() && !IsBelow(oldLog, oldData)) {
    return ResultOf(PlaceFolder(kLogFolder.directory, oldLog, kLogFolder.directory) != Placing::failed);
  }
  return ResultOf(placed != Placing::failed);
}

ResultCode RecalcLogFolder() {
  Choice choice;
  if (!ChosenOrRecorded(kLogFolder, FindPreviousInstallation().logFolder, kLogFolderValue, choice)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (choice.folder.empty()) {
    std::string data;
    if (!GetFolderProperty(kDataFolder.directory, data)) {
      return ERROR_INSTALL_FAILURE;
    }
    choice.folder = data.empty() ? data : LogFolderBelow(data);
    choice.source = kDataFolder.directory;
  }
  return ResultOf(PlaceIfAny(choice) != Placing::failed);
}

ResultCode FindExistingLogFolder() {
  const std::string &recorded = FindPreviousInstallation().logFolder;
  const bool exists = !recorded.empty() && iwiFolderExists(recorded);
  return ResultOf(PlaceIfAny({kLogFolder, exists ? TidiedFolder(recorded) : "", kLogFolderValue}) != Placing::failed);
}

ResultCode ValidatePath() {
  std::string name;
  if (!GetTrimmedProperty("ZQVPATHTOCHECK", name)) {
    return ERROR_INSTALL_FAILURE;
  }
  bool valid = false;
  if (!name.empty()) {
    std::string value;
    // What somebody types into a dialog may be of any length; that it is no path is for the rule to say.
    if (!GetProperty(name.c_str(), value, kNameListLength)) {
      return ERROR_INSTALL_FAILURE;
    }
    const std::string folder = TidiedFolder(value);
    valid = IsValidFolder(folder);
    if (!valid) {
      Log("Path '%s' is not valid", value.c_str());
    } else if (!SetProperty(name.c_str(), folder)) {
      return ERROR_INSTALL_FAILURE;
    }
  }
  return ResultOf(SetSwitch("ZQVPATHVALID", valid));
}

}  // namespace zqv
