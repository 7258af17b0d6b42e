#pragma once

#include <string>

#include "base/load_state.h"
#include "platform/win32.h"
#include "runtime/property_source.h"

namespace zqv {

/// Properties that a user may set on the command line or in a response file.

extern LoadStateEntry &responsePropertyState;

/// Reads a property; where the property table has nothing, the stanza "Response" of the response file that USEINI names
/// is asked, whatever the case of its keywords. `fromResponse`, when given, tells whether the response file supplied
/// the value. `length` is the longest value that is accepted from the property table, in characters and with its
/// terminator; a line of the response file has its own limit. The value is empty when neither has it. False
/// when a property or the response file cannot be read, the latter with an error message.
[[nodiscard]] bool GetPropertyWithResponse(const char *name, std::string &value, bool *fromResponse = nullptr,
                                           DWORD length = kLongLength);

/// The response file's path, as USEINI gave it; empty until a read has asked for it.
const std::string &ResponseFilePath();

}  // namespace zqv
