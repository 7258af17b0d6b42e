#include "services/removal/deletion_guard.h"

#include <algorithm>

#include "base/code_page.h"
#include "base/folder_rule.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "services/system/environment.h"

namespace zqv {

namespace {

/// The installer's properties that name folders of the system and of the user; TempFolder is apart.
constexpr const char *kBarredFolders[] = {"SystemFolder",        "System64Folder",       "WindowsFolder",
                                          "ProgramFilesFolder",  "ProgramFiles64Folder", "CommonFilesFolder",
                                          "CommonFiles64Folder", "CommonAppDataFolder",  "AppDataFolder",
                                          "LocalAppDataFolder",  "PersonalFolder"};

/// True when a tidied folder is another one or lies below it.
bool IsIn(const std::string &folder, const std::string &other) { return StartsWithName(folder, other); }

}  // namespace

bool DeletionGuard::ReadBarred() {
  for (const char *name : kBarredFolders) {
    std::string folder;
    if (!GetProperty(name, folder)) {
      return false;
    }
    Bar(folder);
  }
  std::string profile = "%USERPROFILE%";
  if (!GetProperty("TempFolder", temporary_) || !iwiExpandEnvironment(profile)) {
    return false;
  }
  temporary_ = TidiedFolder(temporary_);
  Bar(profile);
  return true;
}

bool DeletionGuard::Prepare() {
  if (reading_ == Reading::notYet) {
    reading_ = ReadBarred() ? Reading::done : Reading::failed;
  }
  return reading_ == Reading::done;
}

void DeletionGuard::Bar(const std::string &folder) {
  const std::string tidied = TidiedFolder(folder);
  if (!tidied.empty()) {
    barred_.push_back(tidied);
  }
}

bool DeletionGuard::MayDeleteBelow(const std::string &folder, Temporary temporary) {
  const std::string tidied = TidiedFolder(folder);
  const bool mayBeIt = temporary == Temporary::allowed;
  if (Prepare() && IsValidFolder(tidied) && !IsRoot(tidied) && (mayBeIt || !IsIn(temporary_, tidied)) &&
      std::none_of(barred_.begin(), barred_.end(), [&](const std::string &bar) { return IsIn(bar, tidied); })) {
    return true;
  }
  if (std::none_of(told_.begin(), told_.end(), [&](const std::string &known) { return EqualName(known, tidied); })) {
    told_.push_back(tidied);
    Log("***Refusing to delete below '%s'", tidied.c_str());
  }
  return false;
}

}  // namespace zqv
