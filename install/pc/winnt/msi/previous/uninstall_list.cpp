#include "previous/uninstall_list.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "base/path.h"
#include "base/read_line.h"
#include "base/text.h"
#include "platform/c_file.h"
#include "platform/owner.h"
#include "previous/base_component.h"
#include "previous/previous_installation.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "runtime/temp_name.h"
#include "services/files/delete_entry.h"
#include "services/tables/binary_stream.h"
#include "services/tables/remove_file.h"

namespace zqv {

namespace {

/// An entry's longest text: no path that the system takes is longer.
constexpr std::size_t kEntryLength = MAX_PATH;

/// The folder that an entry's first field stands for.
struct BaseFolder {
  std::string_view field;
  std::string path;  ///< without a backslash at its end; empty when it is not known
  DeletionGuard::Temporary temporary = DeletionGuard::Temporary::barred;
};

/// The first one is that of the entries without a field.
struct BaseFolders {
  BaseFolder all[3];
};

BaseFolders ReadBaseFolders() {
  // A folder that cannot be read, which is logged, is one that is not known.
  const std::string &program = PreviousProgramFolder();
  std::string data;
  static_cast<void>(GetTrimmedProperty("ZQVPREVDAT", data));
  static_cast<void>(GetKeptProperty(Kept::tempFolder));
  return {{{"PGM,", program}, {"DAT,", data}, {"TMP,", ValueOf(Kept::tempFolder), DeletionGuard::Temporary::allowed}}};
}

/// The line without what is around its entry: a carriage return at its end, blanks and tabs.
std::string_view EntryIn(std::string_view line) {
  return StripSpace(line.substr(0, line.ends_with('\r') ? line.size() - 1 : line.size()));
}

/// True for what no path of a list holds: control characters and "/".
bool IsForbidden(char c) { return static_cast<unsigned char>(c) < ' ' || c == '/'; }

/// True for a path of which only the last element, if any, has wildcards.
bool IsPath(std::string_view entry) {
  return !entry.empty() && std::none_of(entry.begin(), entry.end(), IsForbidden) &&
         SplitAtLastBackslash(entry).folder.find_first_of("*?") == std::string_view::npos;
}

/// True for ".." and for what the system takes for it once it has dropped the blanks and dots at an element's end.
bool IsParent(std::string_view element) {
  return element.starts_with("..") && element.find_first_not_of(". ") == std::string_view::npos;
}

/// True when the path is not one below a folder, or might not be.
bool LeavesFolder(std::string_view path) {
  if (path.front() == '\\' || path.find(':') != std::string_view::npos) {
    return true;
  }
  while (!path.empty()) {
    const std::size_t end = std::min(NextBackslash(path), path.size());
    if (IsParent(path.substr(0, end))) {
      return true;
    }
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return false;
}

/// An entry that cannot be stacked, which is logged, does not keep the others from it.
void StackEntry(const BaseFolder &base, const std::string &path, DeletionGuard &guard) {
  const std::string &folder = base.path;
  if (folder.empty()) {
    Log("No folder for '%s'", path.c_str());
    return;
  }
  if (LeavesFolder(path)) {
    Log("***Path '%s' leaves the folder '%s'", path.c_str(), folder.c_str());
    return;
  }
  if (!guard.MayDeleteBelow(folder, base.temporary)) {
    return;
  }
  const std::string full = folder + "\\" + path;
  if (EndsInBackslash(full)) {
    static_cast<void>(iwiStackFolderForDeletion(full, kBaseComponent, kWhenInstalled));
  } else {
    static_cast<void>(iwiStackFilesForDeletion(full, kBaseComponent, kWhenInstalled));
  }
}

void ProcessEntry(const BaseFolders &folders, const std::string &list, unsigned number, std::string_view entry,
                  DeletionGuard &guard) {
  const BaseFolder *base = &folders.all[0];
  for (const BaseFolder &folder : folders.all) {
    if (entry.starts_with(folder.field)) {
      base = &folder;
      entry.remove_prefix(folder.field.size());
      break;
    }
  }
  if (!IsPath(entry)) {
    Log("***Line %u of list '%s' is no path", number, list.c_str());
    return;
  }
  StackEntry(*base, std::string(entry), guard);
}

void ProcessLines(const std::string &path, const std::string &list, DeletionGuard &guard) {
  const OwnedStream file(OpenCFile(path.c_str(), "rb"));
  if (!file) {
    Log("***Can't open '%s'", path.c_str());
    return;
  }
  const BaseFolders folders = ReadBaseFolders();
  std::string line;
  for (unsigned number = 1; ReadLine(file.Get(), line) > 0; ++number) {
    const std::string_view entry = EntryIn(line);
    if (entry.starts_with(';') || entry.starts_with('#')) {
      continue;
    }
    if (entry.size() > kEntryLength) {
      Log("***Line %u of list '%s' is longer than a path", number, list.c_str());
    } else if (!entry.empty()) {
      ProcessEntry(folders, list, number, entry, guard);
    }
  }
  if (std::ferror(file.Get()) != 0) {
    Log("***Can't read '%s'", path.c_str());
  }
}

}  // namespace

void ProcessUninstallList(const std::string &name, DeletionGuard &guard) {
  const std::string path = TempName(false, "zqvu", ".txt");
  if (path.empty()) {
    Log("***No temporary file for list '%s'", name.c_str());
    return;
  }
  if (iwiUnpackBinary(name, ".u00", path, nullptr)) {
    ProcessLines(path, name, guard);
  }
  static_cast<void>(DeleteOneFile({.execute = true, .path = path, .report = true}));
}

}  // namespace zqv
