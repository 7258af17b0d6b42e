// Stands for each of the product's other programs, under its name.
//
//   NAME.exe -hold               stays until it is terminated
//   NAME.exe -hold MANAGER       stays until the command that ends this part of the queue manager asks it to go
//   endqvm.exe -i MANAGER        asks the zqvzxma0.exe of the queue manager to go
//   endqvlsr.exe -m MANAGER      asks its runqvlsr.exe to go
//
// One that stays says so on its standard output.

#include <windows.h>

#include <cstdio>
#include <cstring>

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
  std::fputs("usage: -hold [MANAGER] | -i MANAGER | -m MANAGER\n", stderr);
  return 2;
}
