// Stands for each of the product's other programs, under its name.
//
//   NAME.exe -hold               stays until it is terminated
//   NAME.exe -hold MANAGER       stays until the command that ends this part of the queue manager asks it to go
//   endqvm.exe -i MANAGER        asks the zqvzxma0.exe of the queue manager to go
//   endqvlsr.exe -m MANAGER      asks its runqvlsr.exe to go
//   zqvmkdir.exe FOLDER          makes the folders of the product's data there
//   zksetup.exe /s               the setup of the kit: registers it; with /u takes the registration away
//
// One that stays says so on its standard output. A call that is none of the first four appends a line of its name and
// its arguments, "NAME|argument|argument", to the file that the environment variable QVCALLS names, if it does, and
// ends with 0, or the number in QVEXITCODE; the kit's setup with that in QVZEKITEXITCODE, and registers nothing where
// it is neither 0 nor 3010.

#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

/// The name of the event that asks a program of a queue manager to go. A longer name than fits is cut.
struct EventName {
  char text[MAX_PATH];

  EventName(const char *program, const char *manager) {
    std::snprintf(text, sizeof text, "Global\\%s %s", program, manager);
  }
};

int Hold(const char *program, const char *manager) {
  // Of manual reset: one request is for all that wait for it.
  const HANDLE asked = CreateEventA(nullptr, TRUE, FALSE, manager ? EventName(program, manager).text : nullptr);
  if (asked == nullptr) {
    return 1;
  }
  std::puts("holding");
  std::fflush(stdout);
  WaitForSingleObject(asked, INFINITE);
  return 0;
}

int End(const char *program, const char *manager) {
  const HANDLE asked = OpenEventA(EVENT_MODIFY_STATE, FALSE, EventName(program, manager).text);
  return asked != nullptr && SetEvent(asked) != FALSE ? 0 : 1;
}

/// One write for the whole line: others may be writing.
void Record(const char *program, int count, char **arguments) {
  std::string line = program;
  for (int at = 1; at < count; ++at) {
    line = line + "|" + arguments[at];
  }
  line += "\n";
  const char *const path = std::getenv("QVCALLS");
  const HANDLE file = CreateFileA(path != nullptr ? path : "", FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                  nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  DWORD written = 0;
  if (file != INVALID_HANDLE_VALUE) {
    WriteFile(file, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
    CloseHandle(file);
  }
}

bool MakeDataFolders(std::string home) {
  if (home.empty() || home.back() != '\\') {
    home += '\\';
  }
  for (const char *name : {"qmgrs", "errors", "conv", "web", "web\\scripts"}) {
    if (CreateDirectoryA((home + name).c_str(), nullptr) == FALSE && GetLastError() != ERROR_ALREADY_EXISTS) {
      return false;
    }
  }
  return true;
}

constexpr char kKitKey[] = "Software\\Korvex\\QVSeries\\CurrentVersion\\Zekit";

bool RegisterKit() {
  constexpr char kVersion[] = "4.0.1";
  return RegSetKeyValueA(HKEY_LOCAL_MACHINE, kKitKey, "Version", REG_SZ, kVersion, sizeof kVersion) == ERROR_SUCCESS;
}

bool IsKeyEmpty(const std::string &path) {
  DWORD keys = 1;
  DWORD values = 1;
  HKEY key = nullptr;
  if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) == ERROR_SUCCESS) {
    RegQueryInfoKeyA(key, nullptr, nullptr, nullptr, &keys, nullptr, nullptr, &values, nullptr, nullptr, nullptr,
                     nullptr);
    RegCloseKey(key);
  }
  return keys == 0 && values == 0;
}

/// The keys on the way go, too, as far as there is nothing else in them.
bool DeregisterKit() {
  const LSTATUS deleted = RegDeleteKeyValueA(HKEY_LOCAL_MACHINE, kKitKey, "Version");
  for (std::string path = kKitKey; IsKeyEmpty(path); path.resize(path.rfind('\\'))) {
    RegDeleteKeyA(HKEY_LOCAL_MACHINE, path.c_str());
  }
  return deleted == ERROR_SUCCESS;
}

int SetUpKit(const char *verb) {
  const char *const exitCode = std::getenv("QVZEKITEXITCODE");
  const int code = exitCode != nullptr ? std::atoi(exitCode) : 0;
  if (code != 0 && code != ERROR_SUCCESS_REBOOT_REQUIRED) {
    return code;
  }
  if (std::strcmp(verb, "/s") == 0) {
    return RegisterKit() ? code : 1;
  }
  return std::strcmp(verb, "/u") == 0 && DeregisterKit() ? code : 1;
}

}  // namespace

int main(int count, char **arguments) {
  char path[MAX_PATH] = "";
  GetModuleFileNameA(nullptr, path, MAX_PATH - 1);
  char *program = std::strrchr(path, '\\') + 1;
  *std::strrchr(program, '.') = '\0';

  const char *verb = count > 1 ? arguments[1] : "";
  const char *manager = count > 2 ? arguments[2] : nullptr;
  if (std::strcmp(verb, "-hold") == 0) {
    return Hold(program, manager);
  }
  if (manager != nullptr && std::strcmp(verb, "-i") == 0) {
    return End("zqvzxma0", manager);
  }
  if (manager != nullptr && std::strcmp(verb, "-m") == 0) {
    return End("runqvlsr", manager);
  }
  Record(program, count, arguments);
  if (std::strcmp(program, "zqvmkdir") == 0 && (count != 2 || !MakeDataFolders(verb))) {
    return 1;
  }
  if (std::strcmp(program, "zksetup") == 0) {
    return SetUpKit(verb);
  }
  const char *const exitCode = std::getenv("QVEXITCODE");
  return exitCode != nullptr ? std::atoi(exitCode) : 0;
}
