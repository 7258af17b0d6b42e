#include "previous/previous_installation.h"

#include "base/path.h"
#include "runtime/log.h"
#include "runtime/property.h"
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

}  // namespace

constinit LoadStateEntry &previousInstallationState = state;

const PreviousInstallation &FindPreviousInstallation() {
  PreviousInstallation &found = state->installation;
  if (!state->asked) {
    state->asked = true;
    std::string vrmf;
    found.exists = ReadRegistryText(HKEY_LOCAL_MACHINE, kCurrentVersionKey, "VRMF", vrmf);
    found.programFolder = Trimmed(Read("PgmFolder"));
    found.dataFolder = Trimmed(Read("DatFolder"));
    found.logFolder = Trimmed(Read("LogFolder"));
    Log("Previous installation level %d ('%s'), program folder '%s', data folder '%s', log folder '%s'",
        found.exists ? 1 : 0, vrmf.c_str(), found.programFolder.c_str(), found.dataFolder.c_str(),
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
