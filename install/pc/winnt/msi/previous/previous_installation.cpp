#include "previous/previous_installation.h"

#include "base/folder_rule.h"
#include "base/path.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "services/files/folder_check.h"
#include "services/system/product_key.h"
#include "services/system/registry.h"

namespace zqv {

namespace {

struct State {
  PreviousInstallation installation;
  bool asked = false;
};
constinit LoadState<State> state;

/// The value's text, empty where there is none.
std::string Read(const char *name) {
  std::string text;
  static_cast<void>(ReadRegistryText(HKEY_LOCAL_MACHINE, kCurrentVersionKey, name, text));
  return text;
}

/// The folder that a value tells, without a backslash at its end; empty where there is none, or none that can be one.
std::string ReadFolder(const char *name) {
  const std::string folder = TidiedFolder(Read(name));
  return folder.empty() || !JudgeFolder(folder, name) ? std::string() : Trimmed(folder);
}

}  // namespace

constinit LoadStateEntry &previousInstallationState = state;

const PreviousInstallation &FindPreviousInstallation() {
  PreviousInstallation &found = state->installation;
  if (!state->asked) {
    state->asked = true;
    found.exists = ReadRegistryText(HKEY_LOCAL_MACHINE, kCurrentVersionKey, kVrmfValue, found.version);
    found.programFolder = ReadFolder(kProgramFolderValue);
    found.dataFolder = ReadFolder(kDataFolderValue);
    found.logFolder = ReadFolder(kLogFolderValue);
    Log("Previous installation level %d ('%s'), program folder '%s', data folder '%s', log folder '%s'",
        found.exists ? 1 : 0, found.version.c_str(), found.programFolder.c_str(), found.dataFolder.c_str(),
        found.logFolder.c_str());
  }
  return found;
}

const std::string &PreviousProgramFolder() {
  static_cast<void>(GetKeptProperty(Kept::previousProgramFolder));
  const std::string &folder = ValueOf(Kept::previousProgramFolder);
  return folder.empty() ? FindPreviousInstallation().programFolder : folder;
}

}  // namespace zqv
