#include <strings.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <memory>
#include <numeric>

#include "fake/call.h"

// The world itself.

bool IgnoreCase::operator()(const std::string &a, const std::string &b) const {
  return strcasecmp(a.c_str(), b.c_str()) < 0;
}

namespace {

std::unique_ptr<World> the_world;
std::uintptr_t last_handle = 0x1000;  // goes on from world to world, so that an old handle is never a valid one

std::string FullKey(World &world, HKEY root, LPCSTR path) {
  std::string key = root == HKEY_CLASSES_ROOT    ? "hkcr"
                    : root == HKEY_CURRENT_USER  ? "hkcu"
                    : root == HKEY_LOCAL_MACHINE ? "hklm"
                                                 : world.Object(Id(root), "key").name;
  key += OrEmpty(path).empty() ? "" : "\\" + OrEmpty(path);
  key.erase(key.find_last_not_of('\\') + 1);
  return key;
}

/// The values of an open key, if it was opened with this access.
NameMap<RegistryValue> &Values(World &world, HKEY key, DWORD access) {
  OpenObject &object = world.Object(Id(key), "key");
  Require((object.access & access) == access, ERROR_ACCESS_DENIED);
  return world.registry[object.name];
}

Module &Loaded(World &world, HMODULE handle) {
  for (auto &[path, module] : world.modules) {
    if (reinterpret_cast<HMODULE>(&module) == handle && module.loads > 0) {
      return module;
    }
  }
  throw Failure{193};
}

std::string FormatText(const char *text, char **arguments) {
  std::string out;
  while (*text != '\0') {
    const char *const begin = text++;
    if (*begin != '%') {
      out += *begin;
    } else if (*text >= '1' && *text <= '9') {
      const int digits = text[1] >= '0' && text[1] <= '9' ? 2 : 1;
      const char *argument = arguments[std::stoi(std::string(text, text + digits)) - 1];
      out += argument != nullptr ? argument : "(null)";
      text += digits;
    } else if (*text == '0') {
      break;
    } else {
      Require(*text != '\0', ERROR_INVALID_PARAMETER);
      out += *text == 'n' ? "\r\n" : *text == 't' ? "\t" : *text == 'b' ? " " : std::string(1, *text);
      ++text;
    }
  }
  return out;
}

int ShowBox(const char *call, LPCSTR text, LPCSTR caption, UINT type, int language) {
  return Call(call, 0, [&](World &world) {
    world.boxes.push_back({OrEmpty(text), OrEmpty(caption), type, language});
    return world.boxAnswer;
  });
}

}  // namespace

World::World() {
  std::string folder = std::filesystem::temp_directory_path() / "world-XXXXXX";
  if (mkdtemp(folder.data()) == nullptr) {
    std::abort();
  }
  root = folder;
}

World::~World() {
  std::filesystem::remove_all(root);
}

World &TheWorld() {
  return the_world ? *the_world : ResetWorld();
}

World &ResetWorld() {
  the_world = std::make_unique<World>();
  return *the_world;
}

int World::OpenHandles() const {
  return std::accumulate(openHandles.begin(), openHandles.end(), 0,
                         [](int total, const auto &kind) { return total + kind.second; });
}

DWORD World::Count(const char *name) {
  ++calls;
  const int nth = ++callCount[name];
  if (onCall) {
    onCall(name);
  }
  const bool named = failCall.name == name && (failCall.nth == 0 || failCall.nth == nth);
  const DWORD code = failAt == calls ? failCode : named ? failCall.code : 0;
  failedCall = code != 0 ? name : failedCall;
  lastError = kGarbageError;
  return code;
}

std::uintptr_t World::Open(OpenObject object) {
  ++openHandles[object.kind];
  objects.emplace(last_handle += 4, std::move(object));
  return last_handle;
}

OpenObject &World::Object(std::uintptr_t handle, const char *kind) {
  const auto object = objects.find(handle);
  Require(object != objects.end() && object->second.kind == kind, ERROR_INVALID_HANDLE);
  return object->second;
}

DWORD World::Close(const char *call, std::uintptr_t handle, const std::set<std::string> &kinds) {
  DWORD code = Count(call);
  const auto object = objects.find(handle);
  if (object == objects.end() || kinds.count(object->second.kind) == 0) {
    badCloses.push_back(call);
    code = ERROR_INVALID_HANDLE;
  } else {
    --openHandles[object->second.kind];
    if (object->second.kind == "mutex") {
      mutexes.erase(mutexes.find(object->second.name));
    }
    objects.erase(object);
  }
  lastError = code != 0 ? code : kGarbageError;
  return code;
}

extern "C" {

DWORD GetLastError() {
  return TheWorld().lastError;
}

void SetLastError(DWORD code) {
  TheWorld().lastError = code;
}

void Sleep(DWORD milliseconds) {
  World &world = TheWorld();
  world.slept += milliseconds;
  world.clockMs += milliseconds;
  if (world.onSleep) {
    world.onSleep(milliseconds);
  }
}

void GetLocalTime(SYSTEMTIME *time) {
  const std::uint64_t now = TheWorld().clockMs;
  const std::time_t seconds = static_cast<std::time_t>(now / 1000);
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  const auto word = [](std::uint64_t value) { return static_cast<WORD>(value); };
  *time = {word(parts.tm_year + 1900), word(parts.tm_mon + 1), word(parts.tm_wday), word(parts.tm_mday),
           word(parts.tm_hour),        word(parts.tm_min),     word(parts.tm_sec),  word(now % 1000)};
}

BOOL CloseHandle(HANDLE handle) {
  return TheWorld().Close("CloseHandle", Id(handle), {"file", "mutex", "process"}) == 0;
}

HANDLE CreateMutexA(SECURITY_ATTRIBUTES *, BOOL, LPCSTR name) {
  return Call("CreateMutexA", HANDLE{}, [&](World &world) {
    world.lastError = world.mutexes.count(OrEmpty(name)) != 0 ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS;
    world.mutexes.insert(OrEmpty(name));
    return reinterpret_cast<HANDLE>(world.Open(OpenObject("mutex", OrEmpty(name))));
  });
}

// Modules.

HMODULE LoadLibraryExA(LPCSTR path, HANDLE, DWORD) {
  return Call("LoadLibraryExA", HMODULE{}, [&](World &world) {
    const auto module = world.modules.find(OrEmpty(path));
    if (module == world.modules.end()) {
      Require(world.Exists(OrEmpty(path)), ERROR_MOD_NOT_FOUND);
      throw Failure{world.ReadFile(path).value_or("-").empty() ? 1006U : 193U};
    }
    ++module->second.loads;
    ++world.openHandles["module"];
    return reinterpret_cast<HMODULE>(&module->second);
  });
}

BOOL FreeLibrary(HMODULE module) {
  World &world = TheWorld();
  bool freed = true;
  try {
    --Loaded(world, module).loads;
    --world.openHandles["module"];
  } catch (const Failure &) {
    freed = false;  // no bad close: a module is drained of its references until this comes
  }
  return Call("FreeLibrary", FALSE, [&](World &) { Require(freed, 193); });
}

FARPROC GetProcAddress(HMODULE module, LPCSTR name) {
  return Call("GetProcAddress", FARPROC{}, [&](World &world) {
    const auto &procs = Loaded(world, module).procs;
    const auto proc = procs.find(OrEmpty(name));
    Require(proc != procs.end(), ERROR_PROC_NOT_FOUND);
    return proc->second;
  });
}

int LoadStringA(HINSTANCE module, UINT id, LPSTR buffer, int capacity) {
  return Call("LoadStringA", 0, [&](World &world) {
    const auto &strings = Loaded(world, module).strings;
    const auto text = strings.find(id);
    Require(text != strings.end() && capacity > 0, 1814);
    Fill(buffer, static_cast<std::size_t>(capacity), text->second);
    return std::strlen(buffer);
  });
}

// Processes.

BOOL ShellExecuteExA(SHELLEXECUTEINFOA *info) {
  return Call("ShellExecuteExA", FALSE, [&](World &world) {
    Require(info->cbSize == sizeof *info, ERROR_ACCESS_DENIED);
    world.launched.push_back({OrEmpty(info->lpFile), OrEmpty(info->lpParameters), OrEmpty(info->lpDirectory),
                              OrEmpty(info->lpVerb), info->nShow, info->fMask});
    const auto program = world.programs.find(OrEmpty(info->lpFile));
    Require(program != world.programs.end(), ERROR_FILE_NOT_FOUND);
    Require(program->second.error == 0, program->second.error);
    info->hInstApp = reinterpret_cast<HINSTANCE>(std::uintptr_t{42});
    info->hProcess = nullptr;
    if ((info->fMask & SEE_MASK_NOCLOSEPROCESS) && program->second.hasProcess) {
      OpenObject process("process", info->lpFile);
      process.endsAt = std::max(world.clockMs + program->second.runtimeMs, program->second.runtimeMs);
      process.exitCode = program->second.exitCode;
      info->hProcess = reinterpret_cast<HANDLE>(world.Open(std::move(process)));
    }
    if (program->second.onLaunch) {
      program->second.onLaunch();
    }
  });
}

DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds) {
  return Call("WaitForSingleObject", 0xFFFFFFFF, [&](World &world) {
    const std::uint64_t end = world.Object(Id(object), "process").endsAt;
    const std::uint64_t left = end > world.clockMs ? end - world.clockMs : 0;
    if (milliseconds != INFINITE && left > milliseconds) {
      world.clockMs += milliseconds;
      return WAIT_TIMEOUT;
    }
    Require(end != kForever, ERROR_INVALID_PARAMETER);  // rather than hang the test
    world.clockMs += left;
    return WAIT_OBJECT_0;
  });
}

BOOL GetExitCodeProcess(HANDLE process, DWORD *code) {
  return Call("GetExitCodeProcess", FALSE, [&](World &world) {
    const OpenObject &object = world.Object(Id(process), "process");
    *code = object.endsAt > world.clockMs ? STILL_ACTIVE : object.exitCode;
  });
}

// The registry.

LONG RegOpenKeyExA(HKEY root, LPCSTR path, DWORD, DWORD access, HKEY *key) {
  return CodedCall("RegOpenKeyExA", [&](World &world) {
    const std::string name = FullKey(world, root, path);
    world.openedKeys.emplace_back(name, access);
    const auto deeper = world.registry.lower_bound(name + "\\");  // a key exists when one below it does
    Require(name.size() == 4 || world.registry.count(name) != 0 ||
                (deeper != world.registry.end() &&
                 strncasecmp(deeper->first.c_str(), (name + "\\").c_str(), name.size() + 1) == 0),
            ERROR_FILE_NOT_FOUND);
    Require(world.deniedKeys.count(name) == 0, ERROR_ACCESS_DENIED);
    OpenObject object("key", name);
    object.access = access;
    *key = reinterpret_cast<HKEY>(world.Open(std::move(object)));
  });
}

LONG RegCloseKey(HKEY key) {
  return static_cast<LONG>(TheWorld().Close("RegCloseKey", Id(key), {"key"}));
}

LONG RegQueryValueExA(HKEY key, LPCSTR name, DWORD *, DWORD *type, BYTE *data, DWORD *size) {
  return CodedCall("RegQueryValueExA", [&](World &world) {
    const auto &values = Values(world, key, KEY_QUERY_VALUE);
    const auto value = values.find(OrEmpty(name));
    Require(value != values.end(), ERROR_FILE_NOT_FOUND);
    Require(data == nullptr || size != nullptr, ERROR_INVALID_PARAMETER);
    if (type != nullptr) {
      *type = value->second.type;
    }
    if (size != nullptr) {
      const std::string &bytes = value->second.bytes;
      const DWORD capacity = std::exchange(*size, static_cast<DWORD>(bytes.size()));
      if (data != nullptr) {
        std::memset(data, kJunk, capacity);
        Require(bytes.size() <= capacity, ERROR_MORE_DATA);
        std::copy(bytes.begin(), bytes.end(), data);
      }
    }
  });
}

LONG RegSetValueExA(HKEY key, LPCSTR name, DWORD, DWORD type, const BYTE *data, DWORD size) {
  return CodedCall("RegSetValueExA", [&](World &world) {
    Values(world, key, KEY_SET_VALUE)[OrEmpty(name)] = {type, std::string(data, data + size)};
  });
}

LONG RegDeleteValueA(HKEY key, LPCSTR name) {
  return CodedCall("RegDeleteValueA", [&](World &world) {
    Require(Values(world, key, KEY_SET_VALUE).erase(OrEmpty(name)) != 0, ERROR_FILE_NOT_FOUND);
  });
}

// The environment and the user.

DWORD ExpandEnvironmentStringsA(LPCSTR source, LPSTR buffer, DWORD capacity) {
  return Call("ExpandEnvironmentStringsA", DWORD{0}, [&](World &world) {
    const std::string text = OrEmpty(source);
    std::string out;
    for (std::size_t at = 0; at < text.size();) {
      const std::size_t end = text[at] == '%' ? text.find('%', at + 1) : std::string::npos;
      const auto known = end == std::string::npos ? world.environment.end()
                                                  : world.environment.find(text.substr(at + 1, end - at - 1));
      out += known != world.environment.end() ? known->second : text.substr(at, 1);
      at = known != world.environment.end() ? end + 1 : at + 1;
    }
    if (out.size() < capacity) {
      Fill(buffer, capacity, out);
    } else if (capacity > 0) {
      std::memset(buffer, kJunk, capacity);
    }
    return out.size() + 1;
  });
}

BOOL SetEnvironmentVariableA(LPCSTR name, LPCSTR value) {
  return Call("SetEnvironmentVariableA", FALSE, [&](World &world) {
    const std::string variable = OrEmpty(name);
    Require(!variable.empty() && variable.find('=') == std::string::npos, ERROR_INVALID_PARAMETER);
    if (value == nullptr) {
      world.environment.erase(variable);
    } else {
      world.environment[variable] = value;
    }
  });
}

BOOL GetUserNameA(LPSTR buffer, DWORD *length) {
  return Call("GetUserNameA", FALSE, [&](World &world) {
    const DWORD capacity = std::exchange(*length, static_cast<DWORD>(world.userName.size() + 1));
    Require(*length <= capacity, ERROR_INSUFFICIENT_BUFFER);
    Fill(buffer, capacity, world.userName);
  });
}

// Messages and windows.

DWORD FormatMessageA(DWORD flags, const void *source, DWORD, DWORD, LPSTR buffer, DWORD capacity, char **arguments) {
  return Call("FormatMessageA", DWORD{0}, [&](World &) {
    Require(flags == (FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ARGUMENT_ARRAY), ERROR_INVALID_PARAMETER);
    const std::string text = FormatText(static_cast<const char *>(source), arguments);
    std::memset(buffer, kJunk, capacity);
    Require(text.size() < capacity, ERROR_INSUFFICIENT_BUFFER);
    Fill(buffer, capacity, text);
    return text.size();
  });
}

HWND GetForegroundWindow() {
  return reinterpret_cast<HWND>(&the_world);
}

int MessageBoxA(HWND, LPCSTR text, LPCSTR caption, UINT type) {
  return ShowBox("MessageBoxA", text, caption, type, -1);
}

int MessageBoxExA(HWND, LPCSTR text, LPCSTR caption, UINT type, WORD language) {
  return ShowBox("MessageBoxExA", text, caption, type, language);
}

HWND FindWindowExA(HWND, HWND after, LPCSTR windowClass, LPCSTR title) {
  return Call("FindWindowExA", HWND{}, [&](World &world) {
    const auto window = world.windows.find(OrEmpty(windowClass != nullptr ? windowClass : title));
    Require(window != world.windows.end(), ERROR_FILE_NOT_FOUND);
    if (world.closingWindows.count(window->first) != 0 && window->second >= 0 && window->second-- == 0) {
      world.windows.erase(window);
      throw Failure{ERROR_FILE_NOT_FOUND};
    }
    const HWND found = reinterpret_cast<HWND>(const_cast<std::string *>(&window->first));
    Require(found != after, ERROR_FILE_NOT_FOUND);
    return found;
  });
}

BOOL PostMessageA(HWND window, UINT message, WPARAM, LPARAM) {
  return Call("PostMessageA", FALSE, [&](World &world) {
    for (const auto &[name, rounds] : world.windows) {
      if (Id(&name) == Id(window)) {
        world.posted.emplace_back(name, message);
        if (message == WM_CLOSE) {
          world.closingWindows.insert(name);
        }
        return TRUE;
      }
    }
    throw Failure{1400};
  });
}

}  // extern "C"
