#include "fake/call.h"

// Programs, services and the processes that run. A service's handle stands for its name.

namespace {

constexpr DWORD kAllAccess = 0x1F0FFF;  // to a process that the caller has started
constexpr DWORD kChangeConfig = 2;

constexpr DWORD kLook = PROCESS_QUERY_INFORMATION | PROCESS_VM_READ;

Service &Named(SC_HANDLE handle, DWORD access) { return world.services[Opened(handle, "service", access).name]; }

BOOL WINAPI EnumProcesses(DWORD *ids, DWORD size, DWORD *used) {
  return Call(FALSE, [&] {
    world.See("", {size});
    *used = 0;
    for (auto process = world.processes.begin(); process != world.processes.end() && *used + 4 <= size; ++process) {
      ids[*used / 4] = process->first;
      *used += 4;
    }
  });
}

BOOL WINAPI EnumProcessModules(HANDLE process, HMODULE *modules, DWORD, DWORD *needed) {
  return Call(FALSE, [&] {
    Opened(process, "process", kLook);
    *modules = reinterpret_cast<HMODULE>(process);
    *needed = sizeof *modules;
  });
}

DWORD WINAPI GetModuleFileNameExA(HANDLE process, HMODULE, LPSTR name, DWORD length) {
  return Call(DWORD{0}, [&] {
    world.See("", {length});
    Fill(name, length, world.processes[Opened(process, "process", kLook).process]);
    return std::strlen(name);
  });
}

}  // namespace

void World::MakePsapi(const std::string &path) {
  WriteFile(path, "MZ");
  const auto proc = [](auto *function) { return reinterpret_cast<FARPROC>(reinterpret_cast<void *>(function)); };
  modules[path].procs = {{"EnumProcesses", proc(EnumProcesses)},
                         {"EnumProcessModules", proc(EnumProcessModules)},
                         {"GetModuleFileNameExA", proc(GetModuleFileNameExA)}};
}

BOOL ShellExecuteExA(SHELLEXECUTEINFOA *info) {
  return Call(FALSE, [&] {
    Require(info->cbSize == sizeof *info, ERROR_ACCESS_DENIED);
    const std::string file = OrEmpty(info->lpFile), parameters = OrEmpty(info->lpParameters);
    world.launched.push_back({file, parameters, OrEmpty(info->lpDirectory), OrEmpty(info->lpVerb), info->nShow});
    world.See(file + " " + parameters, {info->fMask});
    const Program &program = Known(world.programs, file, ERROR_FILE_NOT_FOUND);
    info->hProcess = nullptr;
    if ((info->fMask & SEE_MASK_NOCLOSEPROCESS) && program.hasProcess) {
      const std::uint64_t end = std::max(world.clockMs + program.runtimeMs, program.runtimeMs);
      info->hProcess = reinterpret_cast<HANDLE>(
          world.Open({.kind = "process", .access = kAllAccess, .exitCode = program.exitCode, .endsAt = end}));
    }
  });
}

DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds) {
  return Call(0xFFFFFFFF, [&] {
    world.See("", {milliseconds});
    const std::uint64_t end = world.Object(Id(object), "process").endsAt;
    const std::uint64_t left = end > world.clockMs ? end - world.clockMs : 0;
    Require(end != kForever || milliseconds != INFINITE, ERROR_INVALID_PARAMETER);  // rather than hang the test
    const bool ends = milliseconds == INFINITE || left <= milliseconds;
    world.clockMs += ends ? left : milliseconds;
    return ends ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
  });
}

BOOL GetExitCodeProcess(HANDLE process, DWORD *code) {
  return Call(FALSE, [&] {
    const OpenObject &object = world.Object(Id(process), "process");
    *code = object.endsAt > world.clockMs ? STILL_ACTIVE : object.exitCode;
  });
}

HANDLE OpenProcess(DWORD access, BOOL, DWORD id) {
  return Call(HANDLE{}, [&] {
    world.See("", {access});
    Known(world.processes, id, ERROR_INVALID_PARAMETER);
    return world.Open({.kind = "process", .access = access, .process = id});
  });
}

BOOL TerminateProcess(HANDLE process, UINT) {
  return Call(FALSE, [&] {
    const auto ended = world.processes.find(Opened(process, "process", PROCESS_TERMINATE).process);
    world.held.erase(ended->second);
    world.processes.erase(ended);
  });
}

SC_HANDLE OpenSCManagerA(LPCSTR, LPCSTR, DWORD access) {
  return Call(SC_HANDLE{}, [&] {
    world.See("", {access});
    return world.Open({.kind = "manager", .access = access});
  });
}

SC_HANDLE OpenServiceA(SC_HANDLE manager, LPCSTR name, DWORD access) {
  return Call(SC_HANDLE{}, [&] {
    world.Object(Id(manager), "manager");
    world.See(OrEmpty(name), {access});
    Known(world.services, OrEmpty(name), ERROR_SERVICE_DOES_NOT_EXIST);
    return world.Open({.kind = "service", .name = name, .access = access});
  });
}

BOOL CloseServiceHandle(SC_HANDLE handle) { return world.Close(Id(handle), {"manager", "service"}) == 0; }

BOOL QueryServiceStatus(SC_HANDLE service, SERVICE_STATUS *status) {
  return Call(FALSE, [&] {
    Service &named = Named(service, SERVICE_QUERY_STATUS);
    named.state = named.stopsAt <= world.clockMs ? SERVICE_STOPPED : named.state;
    status->dwCurrentState = named.state;
  });
}

BOOL ControlService(SC_HANDLE service, DWORD control, SERVICE_STATUS *) {
  return Call(FALSE, [&] {
    Service &named = Named(service, SERVICE_STOP);
    Require(control == SERVICE_CONTROL_STOP, ERROR_INVALID_PARAMETER);
    Require(named.state != SERVICE_STOPPED, ERROR_SERVICE_NOT_ACTIVE);
    named.stopsAt = named.stopMs == kForever ? kForever : world.clockMs + named.stopMs;
  });
}

BOOL ChangeServiceConfigA(SC_HANDLE service, DWORD type, DWORD startType, DWORD errorControl, LPCSTR, LPCSTR, DWORD *,
                          LPCSTR, LPCSTR, LPCSTR, LPCSTR displayName) {
  return Call(FALSE, [&] {
    Require((type & startType & errorControl) == SERVICE_NO_CHANGE, ERROR_INVALID_PARAMETER);
    Named(service, kChangeConfig).displayName = displayName;
  });
}
