#include "running/process_image.h"

#include <new>
#include <optional>
#include <vector>

#include "base/code_page.h"
#include "base/module_file.h"
#include "base/path.h"
#include "base/text.h"
#include "platform/owner.h"
#include "running/file_in_use.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "services/files/existence.h"
#include "services/tables/binary_stream.h"

namespace zqv {

namespace {

constexpr char kPsapi[] = "psapi.dll";
constexpr DWORD kFirstArraySize = 4;  // bytes
constexpr DWORD kArrayGrowth = 2048;

/// The operations of the process-status library, found at run time.
struct ProcessStatus {
  OwnedModule module;
  BOOL(WINAPI *enumProcesses)(DWORD *ids, DWORD size, DWORD *used);
  BOOL(WINAPI *enumProcessModules)(HANDLE process, HMODULE *modules, DWORD size, DWORD *needed);
  DWORD(WINAPI *getModuleFileName)(HANDLE process, HMODULE module, LPSTR name, DWORD length);
};

/// Finds one operation; false, with a line that shows it as `shown`, when it is missing.
template <typename Function>
bool Resolve(HMODULE library, const char *name, const char *shown, Function &function) {
  const FARPROC found = GetProcAddress(library, name);
  if (found == nullptr) {
    Log("***Unable to get %s() address; code %d.", shown, static_cast<int>(GetLastError()));
    return false;
  }
  function = reinterpret_cast<Function>(reinterpret_cast<void *>(found));
  return true;
}

/// True when a file may be loaded from the folder: it can be read, and is absolute.
bool IsTrusted(Kept folder) { return GetKeptProperty(folder) && IsAbsoluteFolder(ValueOf(folder)); }

std::string FindPsapi() {
  std::string path;
  if (IsTrusted(Kept::previousProgramFolder)) {
    path = Format("%s\\%s\\%s", ValueOf(Kept::previousProgramFolder).c_str(), "uninst", kPsapi);
    if (iwiFileExists(path)) {
      Log("Psapi.dll found at '%s'", path.c_str());
      return path;
    }
  }
  if (!IsTrusted(Kept::tempFolder)) {
    return {};
  }
  path = Format("%s\\%s", ValueOf(Kept::tempFolder).c_str(), kPsapi);
  if (!iwiFileExists(path)) {
    static_cast<void>(iwiUnpackBinary("psapi", ".dll", path, nullptr));  // whether the file is there tells
    if (!iwiFileExists(path)) {
      return {};
    }
    // Without that, which is logged, it is not deleted at the end.
    static_cast<void>(SetProperty(kUnpackedPsapi, path));
  }
  return path;
}

bool LoadProcessStatus(ProcessStatus &status) {
  std::string path;
  iwiLocatePsapi(&path);
  status.module = LoadModuleFile(path, 0);
  if (!status.module) {
    Log("***Can't load '%s'.", path.c_str());
    return false;
  }
  const HMODULE library = status.module.Get();
  return Resolve(library, "EnumProcesses", "EnumProcesses", status.enumProcesses) &&
         Resolve(library, "EnumProcessModules", "EnumProcessModules", status.enumProcessModules) &&
         Resolve(library, "GetModuleFileNameExA", "GetModuleFileNameEx", status.getModuleFileName);
}

/// The identifiers of all processes. Nothing, with a line, when they cannot be had.
std::optional<std::vector<DWORD>> ListProcesses(const ProcessStatus &status) {
  std::vector<DWORD> ids;
  for (DWORD size = kFirstArraySize;; size += kArrayGrowth) {
    try {
      ids.resize(size / sizeof(DWORD));
    } catch (const std::bad_alloc &) {
      LogLine("***Can't allocate process ID array");
      return std::nullopt;
    }
    DWORD used = 0;
    if (status.enumProcesses(ids.data(), size, &used) == FALSE) {
      Log("***EnumProcesses() error %d", static_cast<int>(GetLastError()));
      return std::nullopt;
    }
    if (used < size) {
      ids.resize(used / sizeof(DWORD));
      Log("Found %d processes in system", static_cast<int>(ids.size()));
      return ids;
    }
  }
}

/// The path of the process's executable; empty when it cannot be had.
std::string ImageOf(const ProcessStatus &status, DWORD id) {
  const OwnedKernelHandle process(OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, id));
  if (!process) {
    const LONG error = static_cast<LONG>(GetLastError());
    if (error != ERROR_ACCESS_DENIED && error != ERROR_INVALID_PARAMETER) {
      Log("***OpenProcess(%d) error 1 %d", static_cast<int>(id), static_cast<int>(error));
    }
    return {};
  }
  HMODULE module = nullptr;
  DWORD needed = 0;
  char name[MAX_PATH];
  if (status.enumProcessModules(process.Get(), &module, sizeof module, &needed) == FALSE) {
    return {};
  }
  return {name, status.getModuleFileName(process.Get(), module, name, MAX_PATH)};
}

void Terminate(DWORD id) {
  const OwnedKernelHandle process(OpenProcess(PROCESS_TERMINATE, FALSE, id));
  if (!process) {
    Log("***OpenProcess(%d) error 2 %d", static_cast<int>(id), static_cast<int>(GetLastError()));
  } else if (TerminateProcess(process.Get(), 0) == FALSE) {
    Log("***TerminateProcess() error %d", static_cast<int>(GetLastError()));
  } else {
    Log("Process ID %d terminated", static_cast<int>(id));
  }
}

}  // namespace

void iwiLocatePsapi(std::string *path) {
  const std::string found = FindPsapi();
  if (path != nullptr) {
    *path = found;
  }
}

void iwiTerminateProcessByImage(const std::string &folder, const char *name) {
  const std::string path = Format("%s\\%s", folder.c_str(), name);
  if (!iwiIsFileInUse(path)) {
    Log("File '%s' is not locked", path.c_str());
    return;
  }
  Log("File '%s' is locked", path.c_str());
  ProcessStatus status;
  if (!LoadProcessStatus(status)) {
    return;
  }
  const std::optional<std::vector<DWORD>> processes = ListProcesses(status);
  if (!processes) {
    return;
  }
  bool matched = false;
  for (const DWORD id : *processes) {
    if (id == 0) {
      continue;
    }
    const std::string image = ImageOf(status, id);
    if (EqualName(SplitAtLastBackslash(image).name, name)) {
      matched = true;
      Log("Found process ID %d '%s'", static_cast<int>(id), image.c_str());
      Terminate(id);
    }
  }
  if (!matched) {
    Log("'%s': process not found", name);
  }
}

}  // namespace zqv
