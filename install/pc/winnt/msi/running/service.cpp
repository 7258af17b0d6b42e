#include "running/service.h"

#include "platform/owner.h"
#include "runtime/log.h"
#include "runtime/message.h"
#include "runtime/progress.h"

namespace zqv {

namespace {

constexpr int kStopTicks = 1000000;

struct OpenedService {
  OwnedService manager;
  OwnedService service;
  LONG error = ERROR_SUCCESS;  ///< of the open that failed
};

OpenedService Open(const char *service, DWORD access) {
  OpenedService opened;
  opened.manager.Reset(OpenSCManagerA(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
  if (opened.manager) {
    opened.service.Reset(OpenServiceA(opened.manager.Get(), service, access));
  }
  if (!opened.service) {
    opened.error = static_cast<LONG>(GetLastError());
  }
  return opened;
}

void ShowStopping(const char *service) {
  std::string text;
  std::string format;
  if (iwiLoadNlsString(format, message::kStoppingService)) {
    FormatInserts(text, format, service);
  }
  SendActionData(text);
  SendProgress(0, kStopTicks);
}

bool LogStopFailure(LONG error, const char *service) {
  switch (error) {
    case ERROR_SERVICE_DOES_NOT_EXIST:
      Log("***Service '%s' does not exist", service);
      break;
    case ERROR_SERVICE_CANNOT_ACCEPT_CTRL:
      Log("Service '%s' already stopping", service);
      break;
    case ERROR_SERVICE_NOT_ACTIVE:
      Log("Service '%s' not running", service);
      break;
    case ERROR_EXCEPTION_IN_SERVICE:
      Log("***Exception in service '%s'", service);
      break;
    default:
      Log("***Error %d stopping service '%s'", static_cast<int>(error), service);
      break;
  }
  return false;
}

}  // namespace

bool iwiServiceExists(const char *service) {
  const OpenedService opened = Open(service, SERVICE_QUERY_STATUS);
  if (opened.service) {
    Log("Service '%s' exists", service);
    return true;
  }
  if (opened.manager && opened.error == ERROR_SERVICE_DOES_NOT_EXIST) {
    Log("Service '%s' not found", service);
  } else {
    Log("Couldn't open service '%s' %d", service, static_cast<int>(opened.error));
  }
  return false;
}

bool iwiIsServiceActive(const char *service) {
  const OpenedService opened = Open(service, SERVICE_ALL_ACCESS);
  SERVICE_STATUS status{};
  const bool active = opened.service && QueryServiceStatus(opened.service.Get(), &status) != FALSE &&
                      status.dwCurrentState >= SERVICE_START_PENDING && status.dwCurrentState <= SERVICE_PAUSED;
  if (active) {
    Log("Service '%s' is running", service);
  } else {
    Log("Service '%s' is not running", service);
  }
  return active;
}

bool iwiStopService(bool countOnly, bool /*ignored*/, int *ticks, const char *service) {
  if (!countOnly) {
    Log("Stopping service '%s'", service);
  }
  const OpenedService opened = Open(service, SERVICE_STOP);
  if (!opened.manager) {
    Log("***Error %d opening service '%s'", static_cast<int>(opened.error), service);
    return false;
  }
  if (!opened.service) {
    return true;
  }
  if (countOnly) {
    if (ticks != nullptr) {
      *ticks = AddTicks(*ticks, kStopTicks);
      Log("%s %d", "Ticks count is now", *ticks);
    }
    return true;
  }
  ShowStopping(service);
  SERVICE_STATUS status;
  if (ControlService(opened.service.Get(), SERVICE_CONTROL_STOP, &status) == FALSE) {
    return LogStopFailure(static_cast<LONG>(GetLastError()), service);
  }
  return true;
}

void RenameService(const char *service, const char *displayName) {
  const OpenedService opened = Open(service, SERVICE_ALL_ACCESS);
  if (!opened.service) {
    return;
  }
  if (ChangeServiceConfigA(opened.service.Get(), SERVICE_NO_CHANGE, SERVICE_NO_CHANGE, SERVICE_NO_CHANGE, nullptr,
                           nullptr, nullptr, nullptr, nullptr, nullptr, displayName) != FALSE) {
    Log("Service '%s' renamed '%s'", service, displayName);
  } else {
    // Deliberate: the stray quote.
    Log("Error %d from ChangeServiceConfig()'", static_cast<int>(GetLastError()));
  }
}

}  // namespace zqv
