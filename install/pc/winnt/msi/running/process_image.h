#pragma once

#include <string>

namespace zqv {

/// Ending processes by their executable's file.

/// The property that names the process-status library where it has been unpacked; empty otherwise.
inline constexpr char kUnpackedPsapi[] = "ZQVPSAPI";

/// Finds the process-status library: in "uninst" of the previous program folder, else in the temporary folder, into
/// which it is unpacked from the package if need be. A folder that cannot be read or is not absolute is passed over.
/// `path`, if given, gets the library's path, or is empty when there is none.
void iwiLocatePsapi(std::string *path);

/// Ends every process whose first module has the file name `name`, without regard to case. Nothing is done unless
/// "`folder`\`name`" is held open.
void iwiTerminateProcessByImage(const std::string &folder, const char *name);

}  // namespace zqv
