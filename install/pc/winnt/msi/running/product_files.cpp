#include "running/product_files.h"

#include "base/path.h"
#include "base/text.h"
#include "running/file_in_use.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "services/files/existence.h"
#include "services/system/process.h"

namespace zqv {

namespace {

constexpr char kQueueManagerProcess[] = "zqvzxma0.exe";
constexpr char kListenerProcess[] = "runqvlsr.exe";
constexpr char kServiceProcess[] = "zqvsvc.exe";
constexpr char kSupervisorProcess[] = "zqvxssvn.exe";
constexpr char kSharedRuntime[] = "zqvxcs2.dll";
constexpr char kPerformanceMonitor[] = "zqvmperf.dll";
constexpr int kHidden = 0;

}  // namespace

bool ProductFile(const char *name, std::string &path) {
  if (!GetKeptProperty(Kept::programFolder)) {
    return false;
  }
  path = Format("%s\\%s\\%s", ValueOf(Kept::programFolder).c_str(), "bin", name);
  return true;
}

bool MayRunPrograms() { return IsAbsoluteFolder(ValueOf(Kept::programFolder)); }

bool IsProductFileInUse(const char *name) {
  std::string path;
  return ProductFile(name, path) && iwiIsFileInUse(path);
}

bool IsProductRunning() {
  return IsProductFileInUse(kSupervisorProcess) || IsProductFileInUse(kServiceProcess) ||
         (IsProductFileInUse(kSharedRuntime) && !IsPerformanceMonitorRunning());
}

bool IsPerformanceMonitorRunning() { return IsProductFileInUse(kPerformanceMonitor); }

bool iwiQueueManagersRunning() {
  std::string path;
  if (!ProductFile(kQueueManagerProcess, path)) {
    return false;
  }
  if (!iwiIsFileInUse(path)) {
    Log("No queue managers running");
    return false;
  }
  Log("'%s' is locked", path.c_str());
  return true;
}

bool iwiListenersRunning() {
  std::string path;
  if (!ProductFile(kListenerProcess, path)) {
    return true;
  }
  if (!iwiIsFileInUse(path)) {
    Log("No listeners running");
    return false;
  }
  return true;
}

void iwiStartQvService() {
  std::string path;
  if (!ProductFile(kServiceProcess, path)) {
    return;
  }
  if (!MayRunPrograms() || !iwiFileExists(path)) {
    Log("***Can't find '%s'", path.c_str());
  } else if (!iwiLaunch(path, "-START -SILENT", "", kHidden, nullptr)) {
    Log("***Unable to launch '%s'", path.c_str());
  }
}

}  // namespace zqv
