#include "services/system/environment.h"

#include <memory>
#include <new>

#include "runtime/log.h"
#include "services/system/registry.h"

namespace zqv {

namespace {

/// What is added to a text's length for the first try.
constexpr DWORD kFirstRoom = 129;

constexpr char kMachineEnvironment[] = "SYSTEM\\CurrentControlSet\\Control\\Session Manager\\Environment";

}  // namespace

Expansion ExpandReferences(std::string &text) {
  if (text.find('%') == std::string::npos) {
    return {Expansion::done, 0};
  }
  DWORD capacity = static_cast<DWORD>(text.size()) + kFirstRoom;
  for (;;) {
    const std::unique_ptr<char[]> buffer(new (std::nothrow) char[capacity]);
    if (!buffer) {
      return {Expansion::noMemory, 0};
    }
    const DWORD needed = ExpandEnvironmentStringsA(text.c_str(), buffer.get(), capacity);
    if (needed == 0) {
      return {Expansion::failed, static_cast<int>(GetLastError())};
    }
    if (needed <= capacity) {
      text = buffer.get();
      return {Expansion::done, 0};
    }
    capacity = needed;
  }
}

bool iwiExpandEnvironment(std::string &text) {
  if (text.find('%') == std::string::npos) {
    return true;
  }
  std::string expanded = text;
  const Expansion expansion = ExpandReferences(expanded);
  switch (expansion.outcome) {
    case Expansion::noMemory:
      Log("***Can't allocate memory for expanded variables in '%20.20s...'", text.c_str());
      return false;
    case Expansion::failed:
      Log("***Unable to expand environment strings (code %d) for '%20.20s'", expansion.code, text.c_str());
      return false;
    case Expansion::done:
      break;
  }
  LogLine("Expanded:");
  LogLine(text);
  LogLine("- to:");
  LogLine(expanded);
  text = expanded;
  return true;
}

bool iwiRefreshEnvironmentVariable(const std::string &name) {
  std::string value;
  if (!ReadRegistryText(HKEY_LOCAL_MACHINE, kMachineEnvironment, name, value)) {
    Log("Can't find and set environment variable '%s'", name.c_str());
    return false;
  }
  Log("Environment variable '%s' value is:", name.c_str());
  LogLine(value);
  // A value that cannot be expanded is set as it stands.
  static_cast<void>(iwiExpandEnvironment(value));
  if (SetEnvironmentVariableA(name.c_str(), value.c_str()) == FALSE) {
    Log("***Can't set environment variable '%s'", name.c_str());
    return false;
  }
  Log("Set environment variable '%s'", name.c_str());
  return true;
}

}  // namespace zqv
