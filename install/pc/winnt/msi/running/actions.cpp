#include "running/actions.h"

#include <string>

#include "running/product_files.h"
#include "running/service.h"
#include "runtime/phase.h"
#include "runtime/property.h"
#include "runtime/restart.h"
#include "runtime/user_interface.h"

namespace zqv {

ResultCode IsQvRunning() {
  return ResultOf(SetSwitch("ZQVQVISRUNNING", IsProductRunning()) &&
                  SetSwitch("ZQVPERFMONISRUNNING", IsPerformanceMonitorRunning()));
}

ResultCode StartStopping() {
  for (const char *service : {kFirstService, kSecondService}) {
    if (iwiIsServiceActive(service)) {
      iwiStopService(false, false, nullptr, service);
    }
  }
  return ERROR_SUCCESS;
}

ResultCode StopIfOnlyIni() {
  bool full = false;
  if (!AskFullUserInterface(full)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (full) {
    return ERROR_SUCCESS;
  }
  std::string onlyIni;
  if (!GetProperty("ONLYINI", onlyIni)) {
    return ERROR_INSTALL_FAILURE;
  }
  return onlyIni.empty() ? ERROR_SUCCESS : ERROR_INSTALL_USEREXIT;
}

ResultCode RenameQvService() {
  switch (AnnouncePhase()) {
    case Phase::rollback:
      RenameService(kFirstService, "Korvex QVSeries");
      break;
    case Phase::deferred:
      RenameService(kFirstService, "Korvex QVSeries Deleted");
      break;
    case Phase::scriptGeneration:
    case Phase::commit:
      break;
  }
  return ERROR_SUCCESS;
}

ResultCode SetZqvBoot() {
  AnnouncePhase();
  bool needed = false;
  return ResultOf(AskRestart(needed) && SetSwitch("ZQVBOOT", needed));
}

}  // namespace zqv
