#pragma once

#include <string>

#include "base/result_code.h"
#include "platform/owner.h"

namespace zqv {

/// Running programs. `program` is a path or a bare name, which Windows then looks for; `folder` is the working folder,
/// and when it is empty the program's own; `show` is the show command of its window. A path whose file does not exist
/// is not launched.

/// A launched program did not end in time.
constexpr ResultCode kLaunchTimedOut = 1604;

/// The exit code where none is known.
constexpr DWORD kNoExitCode = 0xFFFFFFFF;

/// Launches a program and waits for its end, at most `timeout` milliseconds. The command processor, "cmd" under
/// whatever path, is launched by its bare name. `exitCode`, if not null, gets the program's exit code or kNoExitCode;
/// what it means is for the caller to say. Returns ERROR_SUCCESS, also when the wait itself fails;
/// ERROR_INSTALL_FAILURE when the program could not be launched; kLaunchTimedOut with the program still running.
[[nodiscard]] ResultCode iwiLaunchAndWait(const std::string &program, const std::string &parameters,
                                          const std::string &folder, int show, DWORD *exitCode, DWORD timeout);

/// Launches a program. `process`, if not null, gets its handle, which may be none where no process was started for it.
/// False when the program could not be launched.
[[nodiscard]] bool iwiLaunch(const std::string &program, const std::string &parameters, const std::string &folder,
                             int show, OwnedKernelHandle *process);

}  // namespace zqv
