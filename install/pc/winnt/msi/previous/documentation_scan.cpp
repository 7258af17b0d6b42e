#include "previous/documentation_scan.h"

#include <string>

#include "previous/previous_installation.h"
#include "services/files/existence.h"

namespace zqv {

namespace {

struct State {
  DocumentationFormats formats;
  bool scanned = false;
};
constinit LoadState<State> state;

}  // namespace

constinit LoadStateEntry &documentationScanState = state;

const DocumentationFormats &FindOldDocumentation() {
  if (!state->scanned) {
    state->scanned = true;
    const std::string &folder = PreviousProgramFolder();
    if (!folder.empty()) {
      state->formats.chm = iwiFolderExists(folder + "\\doc\\chm");
      state->formats.pdf = iwiFolderExists(folder + "\\doc\\pdf");
      state->formats.htm = iwiFolderExists(folder + "\\doc\\htm");
    }
  }
  return state->formats;
}

}  // namespace zqv
