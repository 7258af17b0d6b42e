#include "services/system/process.h"

#include "base/path.h"
#include "base/text.h"
#include "runtime/log.h"
#include "services/files/existence.h"

namespace zqv {

namespace {

constexpr char kCommandProcessor[] = "cmd";

bool IsCommandProcessor(std::string_view name) {
  return EqualNoCase(name, kCommandProcessor) || StartsWithNoCase(name, "cmd.");
}

/// False, with a line, when `program` is a path and there is no such file.
bool CanBeFound(const std::string &program) {
  if (!SplitAtLastBackslash(program).hasBackslash || iwiFileExists(program)) {
    return true;
  }
  Log("***Unable to find and run '%s'", program.c_str());
  return false;
}

/// The working folder: the caller's, or else the program's own.
std::string WorkingFolder(const std::string &folder, const std::string &program) {
  return folder.empty() ? std::string(SplitAtLastBackslash(program).folder) : folder;
}

/// Launches and gives ERROR_SUCCESS or the system's error code.
DWORD Launch(const std::string &program, const std::string &parameters, const std::string &folder, int show, DWORD mask,
             OwnedKernelHandle &process) {
  Log("Launching process '%s' '%s'; dir '%s'.", program.c_str(), parameters.c_str(), folder.c_str());
  SHELLEXECUTEINFOA info{};
  info.cbSize = sizeof info;
  info.fMask = mask;
  info.lpVerb = "Open";
  info.lpFile = program.c_str();
  info.lpParameters = parameters.c_str();
  info.lpDirectory = folder.empty() ? nullptr : folder.c_str();
  info.nShow = show;
  if (ShellExecuteExA(&info) == FALSE) {
    return GetLastError();
  }
  process.Reset(info.hProcess);
  return ERROR_SUCCESS;
}

void ReadExitCode(HANDLE process, const char *program, DWORD &exitCode) {
  DWORD code = kNoExitCode;
  if (GetExitCodeProcess(process, &code) == FALSE) {
    Log("***Error %d getting process '%s' exit code.", static_cast<int>(GetLastError()), program);
  } else if (code == STILL_ACTIVE) {
    Log("Process '%s' still active", program);
  } else {
    Log("Process '%s' ended; exit code 0x%8.8lx", program, static_cast<unsigned long>(code));
    exitCode = code;
  }
}

}  // namespace

ResultCode iwiLaunchAndWait(const std::string &program, const std::string &parameters, const std::string &folder,
                            int show, DWORD *exitCode, DWORD timeout) {
  DWORD ownExitCode = kNoExitCode;
  DWORD &code = exitCode != nullptr ? *exitCode : ownExitCode;
  code = kNoExitCode;
  const bool isCommandProcessor = IsCommandProcessor(SplitAtLastBackslash(program).name);
  if (!isCommandProcessor && !CanBeFound(program)) {
    return ERROR_INSTALL_FAILURE;
  }
  const std::string launched = isCommandProcessor ? kCommandProcessor : program;
  OwnedKernelHandle process;
  const DWORD error = Launch(launched, parameters, WorkingFolder(folder, program), show,
                             SEE_MASK_NOCLOSEPROCESS | SEE_MASK_FLAG_NO_UI, process);
  if (error != ERROR_SUCCESS) {
    Log("***Unable to launch process '%s'; code %d.", launched.c_str(), static_cast<int>(error));
    return ERROR_INSTALL_FAILURE;
  }
  switch (WaitForSingleObject(process.Get(), timeout)) {
    case WAIT_OBJECT_0:
      ReadExitCode(process.Get(), launched.c_str(), code);
      return ERROR_SUCCESS;
    case WAIT_TIMEOUT:
      Log("Process '%s' timed out.", launched.c_str());
      return kLaunchTimedOut;
    default:
      Log("***Process '%s' wait error.", launched.c_str());
      return ERROR_SUCCESS;
  }
}

bool iwiLaunch(const std::string &program, const std::string &parameters, const std::string &folder, int show,
               OwnedKernelHandle *process) {
  OwnedKernelHandle ownProcess;
  OwnedKernelHandle &handle = process != nullptr ? *process : ownProcess;
  handle.Reset();
  if (!CanBeFound(program)) {
    return false;
  }
  const DWORD error =
      Launch(program, parameters, WorkingFolder(folder, program), show, SEE_MASK_NOCLOSEPROCESS, handle);
  if (error != ERROR_SUCCESS) {
    Log("***Unable to launch process; code %d.", static_cast<int>(error));
    return false;
  }
  Log("Launched OK");
  return true;
}

}  // namespace zqv
