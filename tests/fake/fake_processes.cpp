#include "fake/call.h"

// Programs, services and the processes that run. A service's handle stands for its name.

namespace {

constexpr DWORD kAllAccess = 0x1F0FFF;  // to a process that the caller has started
constexpr DWORD kChangeConfig = 2;

Service &Named(World &world, const char *call, SC_HANDLE handle, DWORD access) {
  const OpenObject &object = world.Object(Id(handle), "service");
  world.See(call, object.name, {object.access});
  Require((object.access & access) == access, ERROR_ACCESS_DENIED);
  return world.services[object.name];
}

/// A process opened with this access.
OpenObject &Process(World &world, const char *call, HANDLE handle, DWORD access) {
  OpenObject &object = world.Object(Id(handle), "process");
  world.See(call, object.name, {object.access});
  Require((object.access & access) == access, ERROR_ACCESS_DENIED);
  return object;
}

BOOL WINAPI EnumProcesses(DWORD *ids, DWORD size, DWORD *used) {
  return Call("EnumProcesses", FALSE, [&](World &world) {
    world.See("EnumProcesses", "", {size});
    *used = 0;
    for (const auto &[id, image] : world.processes) {
      if (*used + sizeof(DWORD) <= size) {
        ids[*used / sizeof(DWORD)] = id;
        *used += sizeof(DWORD);
      }
    }
  });
}

BOOL WINAPI EnumProcessModules(HANDLE process, HMODULE *modules, DWORD, DWORD *needed) {
  return Call("EnumProcessModules", FALSE, [&](World &world) {
    Process(world, "EnumProcessModules", process, PROCESS_QUERY_INFORMATION | PROCESS_VM_READ);
    *modules = reinterpret_cast<HMODULE>(process);
    *needed = sizeof *modules;
  });
}

DWORD WINAPI GetModuleFileNameExA(HANDLE process, HMODULE, LPSTR name, DWORD length) {
  return Call("GetModuleFileNameExA", DWORD{0}, [&](World &world) {
    world.See("GetModuleFileNameExA", "", {length});
    const DWORD access = PROCESS_QUERY_INFORMATION | PROCESS_VM_READ;
    Fill(name, length, world.processes[Process(world, "GetModuleFileNameExA", process, access).process]);
    return std::strlen(name);
  });
}

template <typename Function>
FARPROC Proc(Function *function) {
  return reinterpret_cast<FARPROC>(reinterpret_cast<void *>(function));
}

}  // namespace

void World::MakePsapi(const std::string &path) {
  WriteFile(path, "MZ");
  modules[path].procs = {{"EnumProcesses", Proc(EnumProcesses)},
                         {"EnumProcessModules", Proc(EnumProcessModules)},
                         {"GetModuleFileNameExA", Proc(GetModuleFileNameExA)}};
}

extern "C" {

BOOL ShellExecuteExA(SHELLEXECUTEINFOA *info) {
  return Call("ShellExecuteExA", FALSE, [&](World &world) {
    Require(info->cbSize == sizeof *info, ERROR_ACCESS_DENIED);
    world.launched.push_back({OrEmpty(info->lpFile), OrEmpty(info->lpParameters), OrEmpty(info->lpDirectory),
                              OrEmpty(info->lpVerb), info->nShow});
    world.See("ShellExecuteExA", OrEmpty(info->lpFile) + " " + OrEmpty(info->lpParameters), {info->fMask});
    const Program &program = Known(world.programs, OrEmpty(info->lpFile), ERROR_FILE_NOT_FOUND);
    info->hProcess = nullptr;
    if ((info->fMask & SEE_MASK_NOCLOSEPROCESS) && program.hasProcess) {
      const std::uint64_t end = std::max(world.clockMs + program.runtimeMs, program.runtimeMs);
      info->hProcess = reinterpret_cast<HANDLE>(
          world.Open({.kind = "process", .access = kAllAccess, .exitCode = program.exitCode, .endsAt = end}));
    }
  });
}

DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds) {
  return Call("WaitForSingleObject", 0xFFFFFFFF, [&](World &world) {
    world.See("WaitForSingleObject", "", {milliseconds});
    const std::uint64_t end = world.Object(Id(object), "process").endsAt;
    const std::uint64_t left = end > world.clockMs ? end - world.clockMs : 0;
    Require(end != kForever || milliseconds != INFINITE, ERROR_INVALID_PARAMETER);  // rather than hang the test
    const bool ends = milliseconds == INFINITE || left <= milliseconds;
    world.clockMs += ends ? left : milliseconds;
    return ends ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
  });
}

BOOL GetExitCodeProcess(HANDLE process, DWORD *code) {
  return Call("GetExitCodeProcess", FALSE, [&](World &world) {
    const OpenObject &object = world.Object(Id(process), "process");
    *code = object.endsAt > world.clockMs ? STILL_ACTIVE : object.exitCode;
  });
}

HANDLE OpenProcess(DWORD access, BOOL, DWORD id) {
  return Call("OpenProcess", HANDLE{}, [&](World &world) {
    world.See("OpenProcess", "", {access});
    Known(world.processes, id, ERROR_INVALID_PARAMETER);
    return world.Open({.kind = "process", .access = access, .process = id});
  });
}

BOOL TerminateProcess(HANDLE process, UINT) {
  return Call("TerminateProcess", FALSE, [&](World &world) {
    const auto ended = world.processes.find(Process(world, "TerminateProcess", process, PROCESS_TERMINATE).process);
    world.held.erase(ended->second);
    world.processes.erase(ended);
  });
}

SC_HANDLE OpenSCManagerA(LPCSTR, LPCSTR, DWORD access) {
  return Call("OpenSCManagerA", SC_HANDLE{}, [&](World &world) {
    world.See("OpenSCManagerA", "", {access});
    return world.Open({.kind = "manager", .access = access});
  });
}

SC_HANDLE OpenServiceA(SC_HANDLE manager, LPCSTR name, DWORD access) {
  return Call("OpenServiceA", SC_HANDLE{}, [&](World &world) {
    world.Object(Id(manager), "manager");
    world.See("OpenServiceA", OrEmpty(name), {access});
    Known(world.services, OrEmpty(name), ERROR_SERVICE_DOES_NOT_EXIST);
    return world.Open({.kind = "service", .name = name, .access = access});
  });
}

BOOL CloseServiceHandle(SC_HANDLE handle) {
  return TheWorld().Close("CloseServiceHandle", Id(handle), {"manager", "service"}) == 0;
}

BOOL QueryServiceStatus(SC_HANDLE service, SERVICE_STATUS *status) {
  return Call("QueryServiceStatus", FALSE, [&](World &world) {
    Service &named = Named(world, "QueryServiceStatus", service, SERVICE_QUERY_STATUS);
    named.state = named.stopsAt <= world.clockMs ? SERVICE_STOPPED : named.state;
    status->dwCurrentState = named.state;
  });
}

BOOL ControlService(SC_HANDLE service, DWORD control, SERVICE_STATUS *) {
  return Call("ControlService", FALSE, [&](World &world) {
    Service &named = Named(world, "ControlService", service, SERVICE_STOP);
    Require(control == SERVICE_CONTROL_STOP, ERROR_INVALID_PARAMETER);
    Require(named.state != SERVICE_STOPPED, ERROR_SERVICE_NOT_ACTIVE);
    named.stopsAt = named.stopMs == kForever ? kForever : world.clockMs + named.stopMs;
  });
}

BOOL ChangeServiceConfigA(SC_HANDLE service, DWORD type, DWORD startType, DWORD errorControl, LPCSTR, LPCSTR, DWORD *,
                          LPCSTR, LPCSTR, LPCSTR, LPCSTR displayName) {
  return Call("ChangeServiceConfigA", FALSE, [&](World &world) {
    Require((type & startType & errorControl) == SERVICE_NO_CHANGE, ERROR_INVALID_PARAMETER);
    Named(world, "ChangeServiceConfigA", service, kChangeConfig).displayName = displayName;
  });
}

}  // extern "C"
