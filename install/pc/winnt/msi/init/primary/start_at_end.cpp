#include <string>

#include "base/yes_no.h"
#include "init/primary/sections.h"
#include "previous/previous_installation.h"
#include "running/file_in_use.h"
#include "running/service.h"
#include "runtime/property.h"
#include "services/files/existence.h"

namespace zqv {

namespace {

constexpr char kTaskbarProgram[] = "zqvmtbrn.exe";

bool ServiceRuns() {
  return (iwiServiceExists(kFirstService) || iwiServiceExists(kSecondService)) &&
         (iwiIsServiceActive(kFirstService) || iwiIsServiceActive(kSecondService));
}

bool TaskbarProgramRuns() {
  const std::string &folder = FindPreviousInstallation().programFolder;
  if (folder.empty()) {
    return false;
  }
  const std::string program = folder + "\\bin\\" + kTaskbarProgram;
  return iwiFileExists(program) && iwiIsFileInUse(program);
}

/// Whether something is to be started at the end: as the user has said, else when it runs now. Never for a client or in
/// an administrative installation.
bool PublishStart(Facts &facts, const char *published, const char *choice, bool (*runs)()) {
  bool clientOnly = false;
  if (!facts.administrative && !AskClientOnly(facts, clientOnly)) {
    return false;
  }
  if (facts.administrative || clientOnly) {
    return SetSwitch(published, false);
  }
  std::string chosen;
  if (!GetProperty(choice, chosen)) {
    return false;
  }
  return SetSwitch(published, chosen.empty() ? runs() : !IsNo(chosen));
}

}  // namespace

bool PublishServiceStart(Facts &facts) { return PublishStart(facts, "ZQVSTARTSERVICE", "STARTSERVICE", ServiceRuns); }

bool PublishTaskbarStart(Facts &facts) {
  return PublishStart(facts, "ZQVSTARTTASKBAR", "STARTTASKBAR", TaskbarProgramRuns);
}

}  // namespace zqv
