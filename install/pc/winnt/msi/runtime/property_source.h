#pragma once

#include <string>

#include "base/load_state.h"
#include "base/note.h"
#include "platform/win32.h"

namespace zqv {

/// Where a property's value comes from: the session's property table in the immediate phase; in a deferred action,
/// which is shown no table, the value list whose path CustomActionData holds. Nothing here writes to the log: each step
/// is told to a note, so that the writer of the log can read its own files' paths with the very same code.

/// Buffer lengths in characters, terminator included. A value that does not fit is an error (ERROR_MORE_DATA) and not
/// cut.
constexpr DWORD kPropertyLength = 260;
constexpr DWORD kCounterLength = 32;
constexpr DWORD kLongLength = 516;
constexpr DWORD kNameListLength = 2048;

extern LoadStateEntry &propertySourceState;

/// Reads a property from the source of the running phase. A property that is not there is no error and gives the empty
/// text. False, with `value` empty, when it cannot be read.
[[nodiscard]] bool ReadProperty(const char *name, std::string &value, DWORD length, Note note);

/// Reads from the value list of a deferred action, loading it first if it is not loaded. Results as ReadProperty.
[[nodiscard]] bool ReadDeferredProperty(const char *name, std::string &value, DWORD length, Note note);

/// The properties that are kept for the life of the load once they have been read. Which is which: the paths of the
/// three logs, and the folders.
enum class Kept { traceLog, userLog, tempLog, dataFolder, tempFolder, programFolder, previousProgramFolder };

/// The kept value's property name.
const char *NameOf(Kept property);

/// The kept value itself, without reading: empty when it has not been read, or was read and is empty. May be assigned.
std::string &ValueOf(Kept property);

/// Forgets the program and the data folder, which have moved: the next read sees the new ones.
void ForgetKeptFolders();

/// Reads a kept property if its value is empty, and keeps it trimmed. Results as ReadProperty.
[[nodiscard]] bool FillKept(Kept property, Note note);

}  // namespace zqv
