#include "previous/documentation_scan.h"

#include <string>

#include "previous/previous_installation.h"
#include "runtime/property.h"
#include "services/files/existence.h"

namespace zqv {

namespace {

struct State {
  DocumentationFormats formats;
  bool scanned = false;
};
constinit LoadState<State> state;

/// Empty when there is none, or none is known.
std::string PreviousProgramFolder() {
  static_cast<void>(GetKeptProperty(Kept::previousProgramFolder));
  const std::string &folder = ValueOf(Kept::previousProgramFolder);
  return folder.empty() ? FindPreviousInstallation().programFolder : folder;
}

}  // namespace

constinit LoadStateEntry &documentationScanState = state;

const DocumentationFormats &FindOldDocumentation() {
  if (!state->scanned) {
    state->scanned = true;
    const std::string folder = PreviousProgramFolder();
    if (!folder.empty()) {
      state->formats.chm = iwiFolderExists(folder + "\\doc\\chm");
      state->formats.pdf = iwiFolderExists(folder + "\\doc\\pdf");
      state->formats.htm = iwiFolderExists(folder + "\\doc\\htm");
    }
  }
  return state->formats;
}

}  // namespace zqv
