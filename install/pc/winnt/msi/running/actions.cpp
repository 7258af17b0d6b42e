#include "running/actions.h"

#include <string>

#include "base/text.h"
#include "running/product_files.h"
#include "running/service.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "runtime/session.h"

namespace zqv {

namespace {

constexpr int kFullUserInterface = 5;
constexpr DWORD kReplacedFilesLength = 64;

}  // namespace

UINT IsQvRunning() {
  const UINT result = SetSwitch("ZQVQVISRUNNING", IsProductRunning());
  return result != ERROR_SUCCESS ? result : SetSwitch("ZQVPERFMONISRUNNING", IsPerformanceMonitorRunning());
}

UINT StartStopping() {
  for (const char *service : {kFirstService, kSecondService}) {
    if (iwiIsServiceActive(service)) {
      iwiStopService(false, false, nullptr, service);
    }
  }
  return ERROR_SUCCESS;
}

UINT StopIfOnlyIni() {
  std::string level;
  if (GetProperty("UILevel", level) != ERROR_SUCCESS) {
    return ERROR_INSTALL_FAILURE;
  }
  if (DecimalValue(level) == kFullUserInterface) {
    return ERROR_SUCCESS;
  }
  std::string onlyIni;
  if (GetProperty("ONLYINI", onlyIni) != ERROR_SUCCESS) {
    return ERROR_INSTALL_FAILURE;
  }
  return onlyIni.empty() ? ERROR_SUCCESS : ERROR_INSTALL_USEREXIT;
}

UINT RenameQvService() {
  if (InRunMode(MSIRUNMODE_ROLLBACK)) {
    LogLine("Executing in rollback");
    RenameService(kFirstService, "Korvex QVSeries");
  } else if (InRunMode(MSIRUNMODE_SCHEDULED)) {
    LogLine("Deferred execution");
    RenameService(kFirstService, "Korvex QVSeries Deleted");
  } else {
    LogLine("Executing in script generation");
  }
  return ERROR_SUCCESS;
}

UINT SetZqvBoot() {
  LogLine(InRunMode(MSIRUNMODE_SCHEDULED) ? "Deferred execution" : "Executing in script generation");
  std::string replaced;
  if (GetProperty("ReplacedInUseFiles", replaced, kReplacedFilesLength) != ERROR_SUCCESS) {
    return ERROR_INSTALL_FAILURE;
  }
  const bool scheduled = InRunMode(MSIRUNMODE_REBOOTATEND);
  if (scheduled) {
    LogLine("Reboot is scheduled");
  }
  return SetSwitch("ZQVBOOT", scheduled || !replaced.empty());
}

}  // namespace zqv
