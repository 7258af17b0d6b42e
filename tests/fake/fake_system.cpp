#include <strings.h>

#include <ctime>
#include <memory>
#include <numeric>
#include <tuple>

#include "fake/call.h"
#include "platform/own_module.h"

namespace {

std::uintptr_t last_handle = 0x1000;  // goes on from world to world, so that an old handle is never a valid one

NameMap<RegistryValue> &Values(HKEY key, DWORD access) { return world.registry[Opened(key, "key", access).name]; }

void PutValue(const RegistryValue &value, DWORD *type, BYTE *data, DWORD *size) {
  if (type != nullptr) {
    *type = value.type;
  }
  const DWORD capacity = std::exchange(*size, static_cast<DWORD>(value.bytes.size()));
  std::fill_n(data, capacity, BYTE{kJunk});
  Require(*size <= capacity, ERROR_MORE_DATA);
  std::copy(value.bytes.begin(), value.bytes.end(), data);
}

/// The module of that handle; `none` if it has never been loaded.
Module &Find(HMODULE handle, Module &none) {
  for (auto &[path, module] : world.modules) {
    if (Id(&module) == Id(handle)) {
      return module;
    }
  }
  return none;
}

/// The module of that handle, to be used; null if it is not loaded.
Module *Loaded(HMODULE handle) {
  Module &module = Find(handle, world.ownModule);
  return module.loads > 0 || handle == zqv::OwnModule() ? &module : nullptr;
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

/// Seconds since 1970 as Windows shows them; the day of the week and the milliseconds are junk.
void PutTime(std::time_t seconds, SYSTEMTIME *time) {
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  std::memset(time, kJunk, sizeof *time);
  std::tie(time->wYear, time->wMonth, time->wDay, time->wHour, time->wMinute, time->wSecond) =
      std::tuple{parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec};
}

}  // namespace

HMODULE zqv::OwnModule() { return reinterpret_cast<HMODULE>(&world.ownModule); }

int AtWork::count = 0;

// The world itself.

World::World() : root(std::make_shared<Node>()) {
  root->attributes = FILE_ATTRIBUTE_DIRECTORY;
  codePage = 1252;
  MakeFolder("C:");
}

World &TheWorld() {
  static World the_world;
  return the_world;
}

World &ResetWorld() { return world = World(); }

int World::OpenHandles(std::string_view kind) const {
  const auto ofKind = [&](const auto &object) { return kind.empty() || object.second.kind == kind; };
  const auto loads = [](int total, const auto &module) { return total + module.second.loads; };
  const auto count = std::count_if(objects.begin(), objects.end(), ofKind);
  return std::accumulate(modules.begin(), modules.end(), static_cast<int>(count), loads);
}

DWORD World::Count(const char *name) {
  ++calls;
  const int nth = ++callCount[name];
  if (onCall) {
    onCall(name);
  }
  call = name;
  seen.clear();
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

DWORD World::Close(std::uintptr_t handle, std::initializer_list<std::string_view> kinds, const char *name) {
  const AtWork atWork;
  DWORD code = Count(name);
  const auto object = objects.find(handle);
  if (object == objects.end() || std::count(kinds.begin(), kinds.end(), object->second.kind) == 0) {
    badCloses.push_back(name);
    code = ERROR_INVALID_HANDLE;
  } else {
    objects.erase(object);
  }
  lastError = code != 0 ? code : kGarbageError;
  return code;
}

DWORD GetLastError() { return world.lastError; }

void SetLastError(DWORD code) { world.lastError = code; }

void Sleep(DWORD milliseconds) {
  world.slept += milliseconds;
  world.clockMs += milliseconds;
}

void GetLocalTime(SYSTEMTIME *time) { PutTime(static_cast<std::time_t>(world.clockMs / 1000), time); }

BOOL FileTimeToSystemTime(const FILETIME *fileTime, SYSTEMTIME *time) {
  return Call(FALSE, [&] {
    const std::uint64_t ticks = std::uint64_t{fileTime->dwHighDateTime} << 32 | fileTime->dwLowDateTime;
    Require(ticks >> 63 == 0, ERROR_INVALID_PARAMETER);
    PutTime(static_cast<std::time_t>(ticks / 10000000) - 11644473600, time);
  });
}

BOOL GetVersionExA(OSVERSIONINFOA *info) {
  return Call(FALSE, [&] {
    auto *const system = reinterpret_cast<OSVERSIONINFOEXA *>(info);
    Require(info->dwOSVersionInfoSize == sizeof *system, ERROR_INSUFFICIENT_BUFFER);
    std::tie(info->dwMajorVersion, info->dwMinorVersion, info->dwBuildNumber) = std::tuple{5, 2, 3790};
    info->dwPlatformId = 2;
    Fill(info->szCSDVersion, sizeof info->szCSDVersion, "Service Pack 2");
    std::tie(system->wServicePackMajor, system->wServicePackMinor) = std::tuple{2, 0};
    system->wProductType = 3;
  });
}

BOOL CloseHandle(HANDLE handle) { return world.Close(Id(handle), {"file", "mutex", "process"}) == 0; }

HANDLE CreateMutexA(SECURITY_ATTRIBUTES *, BOOL owned, LPCSTR name) {
  return Call(HANDLE{}, [&] {
    Require(owned == FALSE, ERROR_INVALID_PARAMETER);
    world.See(OrEmpty(name), {});
    world.lastError = world.mutexes.count(OrEmpty(name)) != 0 ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS;
    return world.Open({.kind = "mutex", .name = OrEmpty(name)});
  });
}

// Modules.

HMODULE LoadLibraryExA(LPCSTR path, HANDLE, DWORD flags) {
  return Call(HMODULE{}, [&] {
    world.See(OrEmpty(path), {flags});
    Module &module = Known(world.modules, OrEmpty(path), world.Exists(OrEmpty(path)) ? 193 : ERROR_MOD_NOT_FOUND);
    ++module.loads;
    module.mayBeDrained = flags == LOAD_LIBRARY_AS_DATAFILE;
    return reinterpret_cast<HMODULE>(&module);
  });
}

BOOL FreeLibrary(HMODULE handle) {
  Module none;
  Module &module = Find(handle, none);
  const bool loaded = module.loads > 0;
  if (loaded) {
    --module.loads;  // a call that is made to fail frees all the same, so that no leak is blamed on the library
  } else if (!module.mayBeDrained) {
    const AtWork atWork;
    world.badCloses.emplace_back("FreeLibrary");
  }
  const BOOL freed = Call(FALSE, [&] { Require(loaded, 193); });
  module.mayBeDrained &= freed != FALSE;
  return freed;
}

FARPROC GetProcAddress(HMODULE module, LPCSTR name) {
  return Call(FARPROC{}, [&] { return Known(Loaded(module)->procs, OrEmpty(name), ERROR_PROC_NOT_FOUND); });
}

int LoadStringA(HINSTANCE module, UINT id, LPSTR buffer, int capacity) {
  const DWORD before = world.lastError;
  return Call(0, [&] {
    world.See(module == zqv::OwnModule() ? "own" : "messages", {static_cast<DWORD>(capacity)});
    Fill(buffer, static_cast<std::size_t>(capacity), Known(Loaded(module)->strings, id, 1814));
    const std::size_t length = std::strlen(buffer);
    world.lastError = length == 0 ? before : world.lastError;
    return length;
  });
}

// The registry.

LONG RegOpenKeyExA(HKEY root, LPCSTR path, DWORD, DWORD access, HKEY *key) {
  return CodedCall([&] {
    const std::map<HKEY, std::string> roots{
        {HKEY_CLASSES_ROOT, "hkcr"}, {HKEY_CURRENT_USER, "hkcu"}, {HKEY_LOCAL_MACHINE, "hklm"}};
    const std::string name = Known(roots, root, ERROR_INVALID_HANDLE) + "\\" + OrEmpty(path);
    world.See(name, {access});
    const auto isInIt = [&](const auto &other) {
      return strncasecmp((other.first + "\\").c_str(), (name + "\\").c_str(), name.size() + 1) == 0;
    };
    Require(std::any_of(world.registry.begin(), world.registry.end(), isInIt), ERROR_FILE_NOT_FOUND);
    *key = reinterpret_cast<HKEY>(world.Open({.kind = "key", .name = name, .access = access}));
  });
}

LONG RegCloseKey(HKEY key) { return static_cast<LONG>(world.Close(Id(key), {"key"})); }

LONG RegQueryValueExA(HKEY key, LPCSTR name, DWORD *, DWORD *type, BYTE *data, DWORD *size) {
  return CodedCall(
      [&] { PutValue(Known(Values(key, KEY_QUERY_VALUE), OrEmpty(name), ERROR_FILE_NOT_FOUND), type, data, size); });
}

LONG RegQueryInfoKeyA(HKEY key, LPSTR, DWORD *, DWORD *, DWORD *, DWORD *, DWORD *, DWORD *, DWORD *longestName,
                      DWORD *longestData, DWORD *, FILETIME *) {
  return CodedCall([&] {
    *longestName = *longestData = 0;
    for (const auto &[name, value] : Values(key, KEY_QUERY_VALUE)) {
      *longestName = std::max(*longestName, static_cast<DWORD>(Folded(name).size()));
      *longestData = std::max(*longestData, static_cast<DWORD>(value.bytes.size()));
    }
  });
}

LONG RegEnumValueA(HKEY key, DWORD index, LPSTR name, DWORD *nameLength, DWORD *, DWORD *type, BYTE *data,
                   DWORD *size) {
  return CodedCall([&] {
    const auto &values = Values(key, KEY_QUERY_VALUE);
    Require(index < values.size(), ERROR_NO_MORE_ITEMS);
    const auto &[found, value] = *std::next(values.begin(), index);
    Require(found.size() < *nameLength && value.bytes.size() <= *size, ERROR_MORE_DATA);
    Fill(name, std::exchange(*nameLength, static_cast<DWORD>(found.size())), found);
    PutValue(value, type, data, size);
  });
}

LONG RegSetValueExA(HKEY key, LPCSTR name, DWORD, DWORD type, const BYTE *data, DWORD size) {
  return CodedCall([&] { Values(key, KEY_SET_VALUE)[OrEmpty(name)] = {type, std::string(data, data + size)}; });
}

LONG RegDeleteValueA(HKEY key, LPCSTR name) {
  return CodedCall([&] { Require(Values(key, KEY_SET_VALUE).erase(OrEmpty(name)) != 0, ERROR_FILE_NOT_FOUND); });
}

// The environment and the user.

DWORD ExpandEnvironmentStringsA(LPCSTR source, LPSTR buffer, DWORD capacity) {
  return Call(DWORD{0}, [&] {
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
  return Call(FALSE, [&] {
    Require(*name != '\0' && std::strchr(name, '=') == nullptr, ERROR_INVALID_PARAMETER);
    world.environment[name] = value;
  });
}

BOOL GetUserNameA(LPSTR buffer, DWORD *length) {
  return Call(FALSE, [&] {
    world.See("", {*length});
    const DWORD capacity = std::exchange(*length, DWORD{sizeof "tester"});
    Require(*length <= capacity, ERROR_INSUFFICIENT_BUFFER);
    Fill(buffer, capacity, "tester");
  });
}

// Messages and windows.

DWORD FormatMessageA(DWORD flags, const void *source, DWORD, DWORD, LPSTR buffer, DWORD capacity, char **arguments) {
  return Call(DWORD{0}, [&] {
    Require((flags & FORMAT_MESSAGE_FROM_STRING) != 0, ERROR_INVALID_PARAMETER);
    world.See("", {flags, capacity});
    const std::string text = FormatText(static_cast<const char *>(source), arguments);
    Fill(buffer, capacity, text);
    Require(text.size() < capacity, ERROR_INSUFFICIENT_BUFFER);
    return text.size();
  });
}

HWND GetForegroundWindow() { return reinterpret_cast<HWND>(&world); }

int MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT type) {
  return Call(0, [&] { world.boxes.push_back({OrEmpty(text), OrEmpty(caption), type, -1, owner}); });
}

int MessageBoxExA(HWND owner, LPCSTR text, LPCSTR caption, UINT type, WORD language) {
  return Call(0, [&] { world.boxes.push_back({OrEmpty(text), OrEmpty(caption), type, language, owner}); });
}

HWND FindWindowExA(HWND, HWND, LPCSTR windowClass, LPCSTR) {
  return Call(HWND{}, [&] {
    Window &window = Known(world.windows, OrEmpty(windowClass), ERROR_FILE_NOT_FOUND);
    Require(!window.closing || window.finds-- > 0, ERROR_FILE_NOT_FOUND);
    return reinterpret_cast<HWND>(&window);
  });
}

BOOL SystemParametersInfoA(UINT action, UINT size, void *parameter, UINT) {
  return Call(FALSE, [&] {
    auto *const settings = static_cast<HIGHCONTRASTA *>(parameter);
    Require(action == SPI_GETHIGHCONTRAST && size == 12 && settings->cbSize == 12, ERROR_INVALID_PARAMETER);
    settings->dwFlags = world.highContrast ? 0x7F : 0x7E;
  });
}

DWORD GetSysColor(int index) {
  return Call(DWORD{0}, [&] {
    Require(index == COLOR_WINDOWTEXT, ERROR_INVALID_PARAMETER);
    return world.textColour;
  });
}

BOOL PostMessageA(HWND handle, UINT message, WPARAM, LPARAM) {
  return Call(FALSE, [&] {
    for (auto &[name, window] : world.windows) {
      window.closing |= Id(&window) == Id(handle) && message == WM_CLOSE;
    }
  });
}
