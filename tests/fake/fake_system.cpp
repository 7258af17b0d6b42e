#include <strings.h>

#include <ctime>
#include <memory>
#include <numeric>
#include <tuple>

#include "fake/call.h"
#include "platform/own_module.h"

namespace {

std::unique_ptr<World> the_world;
std::uintptr_t last_handle = 0x1000;  // goes on from world to world, so that an old handle is never a valid one

/// The values of an open key, if it was opened with this access.
NameMap<RegistryValue> &Values(World &world, const char *call, HKEY key, DWORD access) {
  const OpenObject &object = world.Object(Id(key), "key");
  Require((object.access & access) == access, ERROR_ACCESS_DENIED);
  world.See(call, object.name, {object.access});
  return world.registry[object.name];
}

Module *Loaded(World &world, HMODULE handle) {
  if (handle == zqv::OwnModule()) {
    return &world.ownModule;
  }
  for (auto &[path, module] : world.modules) {
    if (Id(&module) == Id(handle) && module.loads > 0) {
      return &module;
    }
  }
  return nullptr;
}

std::string FormatText(const char *text, char **arguments) {
  std::string out;
  for (; *text != '\0'; ++text) {
    if (*text != '%') {
      out += *text;
    } else if (*++text >= '1' && *text <= '9') {
      const int digits = text[1] >= '0' && text[1] <= '9' ? 2 : 1;
      out += arguments[std::stoi(std::string(text, text + digits)) - 1];
      text += digits - 1;
    } else {
      Require(*text != '\0', ERROR_INVALID_PARAMETER);
      out += *text == 'n' ? "\r\n" : std::string(1, *text);
    }
  }
  return out;
}

int ShowBox(const char *call, HWND owner, LPCSTR text, LPCSTR caption, UINT type, int language) {
  return Call(call, 0, [&](World &world) {
    world.boxes.push_back({OrEmpty(text), OrEmpty(caption), type, language, owner});
    return 1;
  });
}

}  // namespace

HMODULE zqv::OwnModule() { return reinterpret_cast<HMODULE>(&TheWorld().ownModule); }

int AtWork::count = 0;

// The world itself.

World::World() : root(std::make_shared<Node>()) {
  root->attributes = FILE_ATTRIBUTE_DIRECTORY;
  codePage = 1252;
  MakeFolder("C:");
}

World &TheWorld() { return the_world ? *the_world : ResetWorld(); }

World &ResetWorld() {
  the_world = std::make_unique<World>();
  return *the_world;
}

int World::OpenHandles(std::string_view kind) const {
  const auto ofKind = [&](const auto &object) { return kind.empty() || object.second.kind == kind; };
  const auto loads = [](int total, const auto &module) { return total + module.second.loads; };
  const auto count = std::count_if(objects.begin(), objects.end(), ofKind);
  return std::accumulate(modules.begin(), modules.end(), static_cast<int>(count), loads);
}

void World::See(const char *call, std::string subject, std::initializer_list<DWORD> values) {
  asked.insert({call, std::move(subject), values});
}

DWORD World::Count(const char *name) {
  ++calls;
  const int nth = ++callCount[name];
  if (onCall) {
    onCall(name);
  }
  const bool fails = failCall.name.empty() ? failCall.nth == calls
                                           : failCall.name == name && (failCall.nth == 0 || failCall.nth == nth);
  failedCall = fails ? name : failedCall;
  lastError = kGarbageError;
  return fails ? failCall.code : 0;
}

std::uintptr_t World::Open(OpenObject object) {
  objects.emplace(last_handle += 4, std::move(object));
  return last_handle;
}

OpenObject &World::Object(std::uintptr_t handle, const char *kind) {
  OpenObject &object = Known(objects, handle, ERROR_INVALID_HANDLE);
  Require(object.kind == kind, ERROR_INVALID_HANDLE);
  return object;
}

DWORD World::Close(const char *call, std::uintptr_t handle, std::initializer_list<std::string_view> kinds) {
  const AtWork atWork;
  DWORD code = Count(call);
  const auto object = objects.find(handle);
  if (object == objects.end() || std::count(kinds.begin(), kinds.end(), object->second.kind) == 0) {
    badCloses.push_back(call);
    code = ERROR_INVALID_HANDLE;
  } else {
    objects.erase(object);
  }
  lastError = code != 0 ? code : kGarbageError;
  return code;
}

extern "C" {

DWORD GetLastError() { return TheWorld().lastError; }

void SetLastError(DWORD code) { TheWorld().lastError = code; }

void Sleep(DWORD milliseconds) {
  World &world = TheWorld();
  world.slept += milliseconds;
  world.clockMs += milliseconds;
}

void GetLocalTime(SYSTEMTIME *time) {
  const std::uint64_t seconds = TheWorld().clockMs / 1000;
  std::memset(time, kJunk, sizeof *time);  // nobody asks for the date
  time->wHour = static_cast<WORD>(seconds / 3600 % 24);
  time->wMinute = static_cast<WORD>(seconds / 60 % 60);
  time->wSecond = static_cast<WORD>(seconds % 60);
}

BOOL FileTimeToSystemTime(const FILETIME *fileTime, SYSTEMTIME *time) {
  return Call("FileTimeToSystemTime", FALSE, [&](World &) {
    const std::uint64_t ticks = std::uint64_t{fileTime->dwHighDateTime} << 32 | fileTime->dwLowDateTime;
    Require(ticks >> 63 == 0, ERROR_INVALID_PARAMETER);
    const auto seconds = static_cast<std::time_t>(ticks / 10000000) - 11644473600;
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    std::memset(time, kJunk, sizeof *time);
    std::tie(time->wYear, time->wMonth, time->wDay, time->wHour, time->wMinute) =
        std::tuple{parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min};
  });
}

BOOL GetVersionExA(OSVERSIONINFOA *info) {
  return Call("GetVersionExA", FALSE, [&](World &) {
    auto *const system = reinterpret_cast<OSVERSIONINFOEXA *>(info);
    Require(info->dwOSVersionInfoSize == sizeof *system, ERROR_INSUFFICIENT_BUFFER);
    std::tie(info->dwMajorVersion, info->dwMinorVersion, info->dwBuildNumber) = std::tuple{5, 2, 3790};
    info->dwPlatformId = 2;
    Fill(info->szCSDVersion, sizeof info->szCSDVersion, "Service Pack 2");
    std::tie(system->wServicePackMajor, system->wServicePackMinor) = std::tuple{2, 0};
    system->wProductType = 3;
  });
}

BOOL CloseHandle(HANDLE handle) {
  return TheWorld().Close("CloseHandle", Id(handle), {"file", "mutex", "process"}) == 0;
}

HANDLE CreateMutexA(SECURITY_ATTRIBUTES *, BOOL owned, LPCSTR name) {
  return Call("CreateMutexA", HANDLE{}, [&](World &world) {
    Require(owned == FALSE, ERROR_INVALID_PARAMETER);
    world.See("CreateMutexA", OrEmpty(name), {});
    world.lastError = world.mutexes.count(OrEmpty(name)) != 0 ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS;
    return world.Open({.kind = "mutex", .name = OrEmpty(name)});
  });
}

// Modules.

HMODULE LoadLibraryExA(LPCSTR path, HANDLE, DWORD flags) {
  return Call("LoadLibraryExA", HMODULE{}, [&](World &world) {
    world.See("LoadLibraryExA", OrEmpty(path), {flags});
    Module &module = Known(world.modules, OrEmpty(path), world.Exists(OrEmpty(path)) ? 193 : ERROR_MOD_NOT_FOUND);
    ++module.loads;
    module.mayBeDrained = flags == LOAD_LIBRARY_AS_DATAFILE;
    return reinterpret_cast<HMODULE>(&module);
  });
}

BOOL FreeLibrary(HMODULE handle) {
  World &world = TheWorld();
  const auto entry = std::find_if(world.modules.begin(), world.modules.end(),
                                  [&](const auto &known) { return Id(&known.second) == Id(handle); });
  Module *const module = entry == world.modules.end() ? nullptr : &entry->second;
  const bool loaded = module != nullptr && module->loads > 0;
  if (loaded) {
    --module->loads;  // a call that is made to fail frees all the same, so that no leak is blamed on the library
  } else if (module == nullptr || !module->mayBeDrained) {
    const AtWork atWork;
    world.badCloses.emplace_back("FreeLibrary");
  }
  const BOOL freed = Call("FreeLibrary", FALSE, [&](World &) { Require(loaded, 193); });
  if (module != nullptr) {
    module->mayBeDrained = module->mayBeDrained && freed != FALSE;
  }
  return freed;
}

FARPROC GetProcAddress(HMODULE module, LPCSTR name) {
  return Call("GetProcAddress", FARPROC{},
              [&](World &world) { return Known(Loaded(world, module)->procs, OrEmpty(name), ERROR_PROC_NOT_FOUND); });
}

int LoadStringA(HINSTANCE module, UINT id, LPSTR buffer, int capacity) {
  const DWORD before = TheWorld().lastError;
  return Call("LoadStringA", 0, [&](World &world) {
    world.See("LoadStringA", module == zqv::OwnModule() ? "own" : "messages", {static_cast<DWORD>(capacity)});
    Fill(buffer, static_cast<std::size_t>(capacity), Known(Loaded(world, module)->strings, id, 1814));
    const std::size_t length = std::strlen(buffer);
    world.lastError = length == 0 ? before : world.lastError;
    return length;
  });
}

// The registry.

LONG RegOpenKeyExA(HKEY root, LPCSTR path, DWORD, DWORD access, HKEY *key) {
  return CodedCall("RegOpenKeyExA", [&](World &world) {
    const std::map<HKEY, std::string> roots{
        {HKEY_CLASSES_ROOT, "hkcr"}, {HKEY_CURRENT_USER, "hkcu"}, {HKEY_LOCAL_MACHINE, "hklm"}};
    const std::string name = Known(roots, root, ERROR_INVALID_HANDLE) + "\\" + OrEmpty(path);
    world.See("RegOpenKeyExA", name, {access});
    const auto isInIt = [&](const auto &other) {
      return strncasecmp((other.first + "\\").c_str(), (name + "\\").c_str(), name.size() + 1) == 0;
    };
    Require(std::any_of(world.registry.begin(), world.registry.end(), isInIt), ERROR_FILE_NOT_FOUND);
    *key = reinterpret_cast<HKEY>(world.Open({.kind = "key", .name = name, .access = access}));
  });
}

LONG RegCloseKey(HKEY key) { return static_cast<LONG>(TheWorld().Close("RegCloseKey", Id(key), {"key"})); }

LONG RegQueryValueExA(HKEY key, LPCSTR name, DWORD *, DWORD *type, BYTE *data, DWORD *size) {
  return CodedCall("RegQueryValueExA", [&](World &world) {
    const RegistryValue &value =
        Known(Values(world, "RegQueryValueExA", key, KEY_QUERY_VALUE), OrEmpty(name), ERROR_FILE_NOT_FOUND);
    if (type != nullptr) {
      *type = value.type;
    }
    const DWORD capacity = std::exchange(*size, static_cast<DWORD>(value.bytes.size()));
    std::fill_n(data, capacity, BYTE{kJunk});
    Require(*size <= capacity, ERROR_MORE_DATA);
    std::copy(value.bytes.begin(), value.bytes.end(), data);
  });
}

LONG RegQueryInfoKeyA(HKEY key, LPSTR, DWORD *, DWORD *, DWORD *, DWORD *, DWORD *, DWORD *, DWORD *longestName,
                      DWORD *longestData, DWORD *, FILETIME *) {
  return CodedCall("RegQueryInfoKeyA", [&](World &world) {
    *longestName = *longestData = 0;
    for (const auto &[name, value] : Values(world, "RegQueryInfoKeyA", key, KEY_QUERY_VALUE)) {
      *longestName = std::max(*longestName, static_cast<DWORD>(Folded(name).size()));
      *longestData = std::max(*longestData, static_cast<DWORD>(value.bytes.size()));
    }
  });
}

LONG RegEnumValueA(HKEY key, DWORD index, LPSTR name, DWORD *nameLength, DWORD *, DWORD *type, BYTE *data,
                   DWORD *size) {
  return CodedCall("RegEnumValueA", [&](World &world) {
    const auto &values = Values(world, "RegEnumValueA", key, KEY_QUERY_VALUE);
    Require(index < values.size(), ERROR_NO_MORE_ITEMS);
    const auto &[found, value] = *std::next(values.begin(), index);
    Require(found.size() < *nameLength && value.bytes.size() <= *size, ERROR_MORE_DATA);
    Fill(name, std::exchange(*nameLength, static_cast<DWORD>(found.size())), found);
    std::fill_n(data, std::exchange(*size, static_cast<DWORD>(value.bytes.size())), BYTE{kJunk});
    std::copy(value.bytes.begin(), value.bytes.end(), data);
    *type = value.type;
  });
}

LONG RegSetValueExA(HKEY key, LPCSTR name, DWORD, DWORD type, const BYTE *data, DWORD size) {
  return CodedCall("RegSetValueExA", [&](World &world) {
    Values(world, "RegSetValueExA", key, KEY_SET_VALUE)[OrEmpty(name)] = {type, std::string(data, data + size)};
  });
}

LONG RegDeleteValueA(HKEY key, LPCSTR name) {
  return CodedCall("RegDeleteValueA", [&](World &world) {
    Require(Values(world, "RegDeleteValueA", key, KEY_SET_VALUE).erase(OrEmpty(name)) != 0, ERROR_FILE_NOT_FOUND);
  });
}

// The environment and the user.

DWORD ExpandEnvironmentStringsA(LPCSTR source, LPSTR buffer, DWORD capacity) {
  return Call("ExpandEnvironmentStringsA", DWORD{0}, [&](World &world) {
    std::string text = source;
    for (std::size_t at = 0; (at = text.find('%', at)) != std::string::npos;) {
      const std::size_t end = text.find('%', at + 1);
      const auto known = world.environment.find(text.substr(at + 1, end - at - 1));
      const bool expands = end != std::string::npos && known != world.environment.end();
      text.replace(at, expands ? end + 1 - at : 1, expands ? known->second : "%");
      at += expands ? known->second.size() : 1;
    }
    Fill(buffer, capacity, text.size() < capacity ? text : "junk");
    return text.size() + 1;
  });
}

BOOL SetEnvironmentVariableA(LPCSTR name, LPCSTR value) {
  return Call("SetEnvironmentVariableA", FALSE, [&](World &world) {
    Require(*name != '\0' && std::strchr(name, '=') == nullptr, ERROR_INVALID_PARAMETER);
    world.environment[name] = value;
  });
}

BOOL GetUserNameA(LPSTR buffer, DWORD *length) {
  return Call("GetUserNameA", FALSE, [&](World &world) {
    world.See("GetUserNameA", "", {*length});
    const DWORD capacity = std::exchange(*length, static_cast<DWORD>(sizeof "tester"));
    Require(*length <= capacity, ERROR_INSUFFICIENT_BUFFER);
    Fill(buffer, capacity, "tester");
  });
}

// Messages and windows.

DWORD FormatMessageA(DWORD flags, const void *source, DWORD, DWORD, LPSTR buffer, DWORD capacity, char **arguments) {
  return Call("FormatMessageA", DWORD{0}, [&](World &world) {
    Require((flags & FORMAT_MESSAGE_FROM_STRING) != 0, ERROR_INVALID_PARAMETER);
    world.See("FormatMessageA", "", {flags, capacity});
    const std::string text = FormatText(static_cast<const char *>(source), arguments);
    Fill(buffer, capacity, text);
    Require(text.size() < capacity, ERROR_INSUFFICIENT_BUFFER);
    return text.size();
  });
}

HWND GetForegroundWindow() { return reinterpret_cast<HWND>(&the_world); }

int MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT type) {
  return ShowBox("MessageBoxA", owner, text, caption, type, -1);
}

int MessageBoxExA(HWND owner, LPCSTR text, LPCSTR caption, UINT type, WORD language) {
  return ShowBox("MessageBoxExA", owner, text, caption, type, language);
}

HWND FindWindowExA(HWND, HWND, LPCSTR windowClass, LPCSTR) {
  return Call("FindWindowExA", HWND{}, [&](World &world) {
    Window &window = Known(world.windows, OrEmpty(windowClass), ERROR_FILE_NOT_FOUND);
    Require(!window.closing || window.finds-- > 0, ERROR_FILE_NOT_FOUND);
    return reinterpret_cast<HWND>(&window);
  });
}

BOOL SystemParametersInfoA(UINT action, UINT size, void *parameter, UINT) {
  return Call("SystemParametersInfoA", FALSE, [&](World &world) {
    auto *const settings = static_cast<HIGHCONTRASTA *>(parameter);
    Require(action == SPI_GETHIGHCONTRAST && size == 12 && settings->cbSize == 12, ERROR_INVALID_PARAMETER);
    settings->dwFlags = world.highContrast ? 0x7F : 0x7E;
  });
}

DWORD GetSysColor(int index) {
  return Call("GetSysColor", DWORD{0}, [&](World &world) {
    Require(index == COLOR_WINDOWTEXT, ERROR_INVALID_PARAMETER);
    return world.textColour;
  });
}

BOOL PostMessageA(HWND handle, UINT message, WPARAM, LPARAM) {
  return Call("PostMessageA", FALSE, [&](World &world) {
    for (auto &[name, window] : world.windows) {
      window.closing |= Id(&window) == Id(handle) && message == WM_CLOSE;
    }
  });
}

}  // extern "C"
