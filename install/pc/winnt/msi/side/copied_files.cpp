#include "side/copied_files.h"

#include <set>
#include <string_view>
#include <vector>

#include "base/code_page.h"
#include "base/folder_rule.h"
#include "base/path.h"
#include "platform/c_file.h"
#include "platform/owner.h"
#include "previous/base_component.h"
#include "runtime/log.h"
#include "runtime/progress.h"
#include "services/files/attributes.h"
#include "services/files/delete.h"
#include "services/files/search.h"
#include "services/removal/deletion_guard.h"
#include "services/tables/remove_file.h"
#include "side/readable_file.h"

namespace zqv {

namespace {

constexpr char kListName[] = "\\zqvfiles.txt";

struct LessName {
  bool operator()(const std::string &a, const std::string &b) const { return NameKey(a) < NameKey(b); }
};
using Names = std::set<std::string, LessName>;

/// Adds the names of a target's list; of what is no path below it, none. False, with a line, when it cannot be read.
bool ReadNames(const std::string &target, Names &names) {
  const std::string path = target + kListName;
  std::vector<std::string> lines;
  const bool read = ReadLines(path, lines);
  for (const std::string &name : lines) {
    if (IsPathBelow(name)) {
      names.insert(name);
    } else {
      Log("***'%s' in '%s' is no path", name.c_str(), path.c_str());
    }
  }
  return read;
}

/// Adds names to the target's list.
ResultCode WriteNames(const std::string &target, Names names, Undo &undo) {
  const std::string path = target + kListName;
  if (!ReadNames(target, names)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (const ResultCode kept = undo.KeepFile(path); kept != ERROR_SUCCESS) {
    return kept;
  }
  RemoveReadOnly(path, false);
  OwnedStream file(OpenCFile(path.c_str(), "wb"));
  bool written = static_cast<bool>(file);
  for (const std::string &name : names) {
    written = written && std::fputs((name + "\r\n").c_str(), file.Get()) >= 0;
  }
  if (!file || file.Close() != 0 || !written) {
    Log("***Can't write '%s'", path.c_str());
    return ERROR_INSTALL_FAILURE;
  }
  return ERROR_SUCCESS;
}

/// True, with a line, when a folder on the way from `home` to what is named below it leads elsewhere.
bool LeadsOverLink(const std::string &home, const std::string &path) {
  for (std::size_t end = NextBackslash(path, home.size() + 1); end != std::string::npos;
       end = NextBackslash(path, end + 1)) {
    if (IsFolderLink(path.substr(0, end))) {
      Log("***'%s' is a link; '%s' is left alone", path.substr(0, end).c_str(), path.c_str());
      return true;
    }
  }
  return false;
}

}  // namespace

void PlanFiles(const std::string &pattern, bool recurse) {
  int ticks = 0;
  static_cast<void>(iwiDeletePattern(
      {.countOnly = true, .execute = true, .ticks = &ticks, .path = pattern, .deleteFiles = true, .recurse = recurse}));
  AnnounceTicks(ticks);
}

ResultCode CopyWithList(const std::string &source, const std::string &pattern, bool recurse, const std::string &target,
                        Undo &undo) {
  bool isThere = false;
  if (!AskFolder(source, isThere)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (!isThere) {
    Log("No folder '%s'; nothing is copied", source.c_str());
    return ERROR_SUCCESS;
  }
  Names names;
  const CopySteps steps = {[&](const std::string &folder) { return undo.KeepFolder(folder); },
                           [&](const std::string &file) {
                             names.insert(file.substr(target.size() + 1));
                             return undo.KeepFile(file);
                           },
                           [](const std::string &) { SendProgress(0, kTicksPerUnit); }};
  const ResultCode copied = iwiCopyPattern(source, target, pattern, recurse, &steps);
  const ResultCode listed =
      names.empty() ? static_cast<ResultCode>(ERROR_SUCCESS) : WriteNames(target, std::move(names), undo);
  return copied != ERROR_SUCCESS ? copied : listed;
}

bool StackListed(const std::string &home, const std::string &target) {
  DeletionGuard guard;
  Names names;
  if (!guard.Prepare()) {
    return false;
  }
  if (!guard.MayDeleteBelow(home)) {
    return true;
  }
  static_cast<void>(ReadNames(target, names));
  names.insert(kListName + 1);
  std::set<std::string, LessName> folders = {target};
  for (const std::string &name : names) {
    std::string path = target;
    path.append("\\").append(name);
    if (LeadsOverLink(home, path)) {
      continue;
    }
    static_cast<void>(DeleteOneFile({.path = path, .component = kBaseComponent, .installMode = kWhenRemoved}));
    for (std::string_view folder = SplitAtLastBackslash(path).folder; folder.size() > target.size();
         folder = SplitAtLastBackslash(folder).folder) {
      folders.emplace(folder);
    }
  }
  // A folder is behind the one that it is in, so the deepest come first.
  for (const std::string &folder : std::vector<std::string>(folders.rbegin(), folders.rend())) {
    if (!LeadsOverLink(home, folder + "\\")) {
      static_cast<void>(iwiStackFolderForDeletion(folder + "\\", kBaseComponent, kWhenRemoved));
    }
  }
  return true;
}

}  // namespace zqv
