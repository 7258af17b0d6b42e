#include "fake/call.h"

// Services and the processes that run. A service's handle stands for its name.

namespace {

Service &Named(World &world, SC_HANDLE handle, DWORD access) {
  OpenObject &object = world.Object(Id(handle), "service");
  Require((object.access & access) == access, ERROR_ACCESS_DENIED);
  return world.services[object.name];
}

BOOL WINAPI EnumProcesses(DWORD *ids, DWORD size, DWORD *used) {
  return Call("EnumProcesses", FALSE, [&](World &world) {
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
    world.Object(Id(process), "process");
    *modules = reinterpret_cast<HMODULE>(process);
    *needed = sizeof *modules;
  });
}

DWORD WINAPI GetModuleFileNameExA(HANDLE process, HMODULE, LPSTR name, DWORD length) {
  return Call("GetModuleFileNameExA", DWORD{0}, [&](World &world) {
    const std::string &image = world.processes[world.Object(Id(process), "process").access];
    Fill(name, length, image);
    return static_cast<DWORD>(std::min<std::size_t>(image.size(), length - 1));
  });
}

}  // namespace

void World::MakePsapi(const std::string &path) {
  WriteFile(path, "MZ");
  modules[path].procs = {
      {"EnumProcesses", reinterpret_cast<FARPROC>(reinterpret_cast<void *>(EnumProcesses))},
      {"EnumProcessModules", reinterpret_cast<FARPROC>(reinterpret_cast<void *>(EnumProcessModules))},
      {"GetModuleFileNameExA", reinterpret_cast<FARPROC>(reinterpret_cast<void *>(GetModuleFileNameExA))}};
}

extern "C" {

SC_HANDLE OpenSCManagerA(LPCSTR, LPCSTR, DWORD access) {
  return Call("OpenSCManagerA", SC_HANDLE{}, [&](World &world) {
    OpenObject manager("manager");
    manager.access = access;
    return reinterpret_cast<SC_HANDLE>(world.Open(manager));
  });
}

SC_HANDLE OpenServiceA(SC_HANDLE manager, LPCSTR name, DWORD access) {
  return Call("OpenServiceA", SC_HANDLE{}, [&](World &world) {
    world.Object(Id(manager), "manager");
    Require(world.services.count(OrEmpty(name)) != 0, ERROR_SERVICE_DOES_NOT_EXIST);
    OpenObject service("service", name);
    service.access = access;
    return reinterpret_cast<SC_HANDLE>(world.Open(service));
  });
}

BOOL CloseServiceHandle(SC_HANDLE handle) {
  const DWORD code = TheWorld().Close("CloseServiceHandle", Id(handle), {"manager", "service"});
  TheWorld().lastError = code;
  return code == 0 ? TRUE : FALSE;
}

BOOL QueryServiceStatus(SC_HANDLE service, SERVICE_STATUS *status) {
  return Call("QueryServiceStatus", FALSE, [&](World &world) {
    Service &named = Named(world, service, SERVICE_QUERY_STATUS);
    if (named.state != SERVICE_STOPPED && named.stopsAt <= world.clockMs) {
      named.state = SERVICE_STOPPED;
    }
    status->dwCurrentState = named.state;
  });
}

BOOL ControlService(SC_HANDLE service, DWORD control, SERVICE_STATUS *) {
  return Call("ControlService", FALSE, [&](World &world) {
    Service &named = Named(world, service, SERVICE_STOP);
    Require(control == SERVICE_CONTROL_STOP, ERROR_INVALID_PARAMETER);
    Require(named.state != SERVICE_STOPPED, ERROR_SERVICE_NOT_ACTIVE);
    named.stopsAt = named.stopMs == kForever ? kForever : world.clockMs + named.stopMs;
  });
}

BOOL ChangeServiceConfigA(SC_HANDLE service, DWORD type, DWORD startType, DWORD errorControl, LPCSTR, LPCSTR, DWORD *,
                          LPCSTR, LPCSTR, LPCSTR, LPCSTR displayName) {
  return Call("ChangeServiceConfigA", FALSE, [&](World &world) {
    Require((type & startType & errorControl) == SERVICE_NO_CHANGE, ERROR_INVALID_PARAMETER);
    Named(world, service, SERVICE_ALL_ACCESS).displayName = displayName;
  });
}

HANDLE OpenProcess(DWORD access, BOOL, DWORD id) {
  return Call("OpenProcess", HANDLE{}, [&](World &world) {
    Require(world.processes.count(id) != 0, ERROR_INVALID_PARAMETER);
    Require(access == PROCESS_TERMINATE || access == (PROCESS_QUERY_INFORMATION | PROCESS_VM_READ),
            ERROR_ACCESS_DENIED);
    OpenObject process("process");
    process.access = id;
    return reinterpret_cast<HANDLE>(world.Open(process));
  });
}

BOOL TerminateProcess(HANDLE process, UINT) {
  return Call("TerminateProcess", FALSE, [&](World &world) {
    const auto ended = world.processes.find(world.Object(Id(process), "process").access);
    world.held.erase(ended->second);
    world.processes.erase(ended);
  });
}

}  // extern "C"
