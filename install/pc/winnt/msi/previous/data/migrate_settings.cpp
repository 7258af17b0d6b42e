#include "previous/data/migrate_settings.h"

#include <string>
#include <string_view>
#include <vector>

#include "base/folder_rule.h"
#include "base/path.h"
#include "base/read_line.h"
#include "base/text.h"
#include "platform/c_file.h"
#include "platform/owner.h"
#include "previous/data/name_list.h"
#include "previous/data/own_folder.h"
#include "runtime/log.h"
#include "runtime/phase.h"
#include "runtime/progress.h"
#include "runtime/property.h"
#include "runtime/temp_name.h"
#include "services/files/copy.h"
#include "services/files/delete_entry.h"
#include "services/files/existence.h"
#include "services/files/search.h"

namespace zqv {

namespace {

constexpr char kSettings[] = "*.ini";
constexpr char kHandedNames[] = "ZQVMIGRATEFILES";

// Of the two searches, in their lines.
constexpr int kInMigration = 10;
constexpr int kInData = 11;

/// The files' way: folders without a backslash at their ends, and the list of what has been copied.
struct Route {
  std::string migration;
  std::string data;
  std::string list;
};

bool FindRoute(Route &route) {
  if (!FindOwnFolder(kMigrationFolder, route.migration) || !GetKeptProperty(Kept::dataFolder)) {
    return false;
  }
  route.data = ValueOf(Kept::dataFolder);
  if (!IsValidFolder(TidiedFolder(route.data))) {
    Log("***No data folder to migrate to: '%s'", route.data.c_str());
    return false;
  }
  route.list = TempName(true, "zqvm", ".txt");
  if (route.list.empty()) {
    LogLine("***No name for the list of migrated files");
  }
  return !route.list.empty();
}

[[nodiscard]] bool DeleteList(const Route &route) { return DeleteOneFile({.execute = true, .path = route.list}); }

/// Finds out whether the data folder has something of this name. False when that cannot be said: then nothing may be
/// written there.
bool AskWhetherKept(const Route &route, const char *name, bool &kept) {
  const std::string target = route.data + "\\" + name;
  Search search(target);
  kept = search.Next();
  if (kept) {
    Log("'%s' exists; kept", target.c_str());
  }
  return !search.Failed(kInData);
}

/// The files that the data folder does not have.
bool ListMissing(const Route &route, std::vector<std::string> &names) {
  Search search(route.migration + "\\" + kSettings);
  while (search.Next()) {
    bool kept = false;
    if (!search.IsFile()) {
      continue;
    }
    if (!AskWhetherKept(route, search.Name(), kept)) {
      return false;
    }
    if (!kept) {
      names.emplace_back(search.Name());
    }
  }
  return !search.Failed(kInMigration);
}

ResultCode Plan(const Route &route) {
  // An earlier run's list must not lead a rollback of this one.
  std::vector<std::string> names;
  if (!DeleteList(route) || !ListMissing(route, names) || !HandOverNames(kHandedNames, names)) {
    return ERROR_INSTALL_FAILURE;
  }
  AnnounceTicks(AddUnits(0, static_cast<int>(names.size())));
  return ERROR_SUCCESS;
}

/// Adds a name to the list. False, with a line, when it is not there for sure: then the file must not be copied.
bool NoteCopy(const std::string &list, const std::string &name) {
  OwnedStream file(OpenCFile(list.c_str(), "a+"));
  const bool written = file && std::fputs((name + "\n").c_str(), file.Get()) >= 0;
  if (!file || file.Close() != 0 || !written) {
    Log("***Can't write '%s'", list.c_str());
    return false;
  }
  return true;
}

ResultCode CopyFiles(const Route &route) {
  std::vector<std::string> names;
  if (!ReadHandedNames(kHandedNames, names)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (names.empty()) {
    return ERROR_SUCCESS;
  }
  HeldFolder held;
  if (!HoldOwnFolder(route.migration, held)) {
    return ERROR_INSTALL_FAILURE;
  }
  ResultCode result = ERROR_SUCCESS;
  for (const std::string &name : names) {
    if (!NoteCopy(route.list, name)) {
      return ERROR_INSTALL_FAILURE;
    }
    const ResultCode copied = iwiCopyFile(true, route.migration, route.data, name);
    result = copied != ERROR_SUCCESS ? copied : result;
    SendProgress(0, kTicksPerUnit);
  }
  return result;
}

/// Deletes what the list names, if there is one.
void UndoCopies(const Route &route) {
  const std::string &list = route.list;
  const OwnedStream file(OpenCFile(list.c_str(), "rb"));
  if (!file) {
    Log("No list of migrated files '%s'", list.c_str());
    return;
  }
  std::string line;
  while (ReadLine(file.Get(), line) > 0) {
    const std::string name(CutAtLineBreak(line));
    if (IsFileName(name)) {
      static_cast<void>(DeleteOneFile({.execute = true, .path = route.data + "\\" + name, .report = true}));
    } else {
      Log("***'%s' is no file name", name.c_str());
    }
  }
  if (std::ferror(file.Get()) != 0) {
    Log("***Can't read '%s'", list.c_str());
  }
}

ResultCode RunPhase(Phase phase, const Route &route) {
  switch (phase) {
    case Phase::scriptGeneration:
      return Plan(route);
    case Phase::deferred:
      return CopyFiles(route);
    case Phase::rollback:
      UndoCopies(route);
      break;
    case Phase::commit:
      break;
  }
  return ResultOf(DeleteList(route));
}

}  // namespace

ResultCode PrepareMigrateIni() {
  std::string folder;
  std::string migrate;
  if (!ClearOwnFolder(kMigrationFolder, folder) || !GetProperty("ZQVMIGRATE", migrate)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (migrate != "1") {
    LogLine("Nothing to migrate");
    return ERROR_SUCCESS;
  }
  std::string data;
  if (!GetTrimmedProperty("ZQVPREVDAT", data)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (!IsAbsoluteFolder(data) || !iwiFolderExists(data)) {
    LogLine("No earlier data folder");
    return ERROR_SUCCESS;
  }
  return iwiCopyPattern(data, folder, kSettings, false);
}

ResultCode DirectMigrateScripts() {
  const Phase phase = AnnouncePhaseOrCommit();
  Route route;
  return FindRoute(route) ? RunPhase(phase, route) : static_cast<ResultCode>(ERROR_INSTALL_FAILURE);
}

}  // namespace zqv
