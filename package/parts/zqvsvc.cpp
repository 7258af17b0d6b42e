// The product's service program, as far as an installation sees it: it runs, holds its file, and takes its time to
// stop.
//
// Run by the service manager: zqvsvc.exe [-stop FILE]. Asked to stop, it goes on stopping until there is such a file;
// without the option it has stopped when the asking returns.
// Run by hand: zqvsvc.exe -START [-SILENT] starts those of its services that are registered.

#include <windows.h>

#include <cstring>

namespace {

constexpr const char *kServices[] = {"KorvexQVSeries", "QVSeriesServices"};

SERVICE_STATUS_HANDLE service;
HANDLE stopAsked;
const char *stopFile;  // null: none

void Report(DWORD state) {
  SERVICE_STATUS status{};
  status.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
  status.dwCurrentState = state;
  status.dwControlsAccepted = state == SERVICE_RUNNING ? SERVICE_ACCEPT_STOP : 0;
  SetServiceStatus(service, &status);
}

void WINAPI Control(DWORD control) {
  if (control == SERVICE_CONTROL_STOP) {
    Report(stopFile != nullptr ? SERVICE_STOP_PENDING : SERVICE_STOPPED);
    SetEvent(stopAsked);
  }
}

/// The first argument is the name of the service.
void WINAPI Serve(DWORD /*count*/, char **arguments) {
  service = RegisterServiceCtrlHandlerA(arguments[0], Control);
  if (service == nullptr) {
    return;
  }
  Report(SERVICE_RUNNING);
  WaitForSingleObject(stopAsked, INFINITE);
  if (stopFile != nullptr) {
    while (GetFileAttributesA(stopFile) == INVALID_FILE_ATTRIBUTES) {
      Sleep(50);
    }
    Report(SERVICE_STOPPED);
  }
}

int StartServices() {
  int failures = 0;
  const SC_HANDLE manager = OpenSCManagerA(nullptr, nullptr, SC_MANAGER_CONNECT);
  for (const char *name : kServices) {
    const SC_HANDLE registered = OpenServiceA(manager, name, SERVICE_START);
    if (registered != nullptr) {
      failures += StartServiceA(registered, 0, nullptr) == FALSE ? 1 : 0;
      CloseServiceHandle(registered);
    }
  }
  CloseServiceHandle(manager);
  return failures;
}

}  // namespace

int main(int count, char **arguments) {
  if (count > 1 && std::strcmp(arguments[1], "-START") == 0) {
    return StartServices();
  }
  if (count > 2 && std::strcmp(arguments[1], "-stop") == 0) {
    stopFile = arguments[2];
  }
  stopAsked = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  char any[] = "";
  const SERVICE_TABLE_ENTRYA services[] = {{any, Serve}, {nullptr, nullptr}};
  return StartServiceCtrlDispatcherA(services) != FALSE ? 0 : 1;
}
