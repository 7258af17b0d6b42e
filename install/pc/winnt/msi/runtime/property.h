#pragma once

#include <initializer_list>
#include <string>

#include "runtime/property_source.h"

namespace zqv {

/// Reading and setting the installation's properties, with a log line for each access, so that the log shows every
/// value that a decision rested on.

/// Reads a property into `value`, from the property table or, in a deferred action, from the value list. A property
/// that is not there gives the empty text. `length` is the longest value that is accepted, in characters and with its
/// terminator. False, with `value` empty, when it cannot be read.
[[nodiscard]] bool GetProperty(const char *name, std::string &value, DWORD length = kPropertyLength);

/// Reads a property and trims it: blanks and one pair of surrounding quotes go, and a trailing backslash.
[[nodiscard]] bool GetTrimmedProperty(const char *name, std::string &value, DWORD length = kPropertyLength);

/// Reads a property from the value list of a deferred action, in any run mode.
[[nodiscard]] bool CadGetProperty(const char *name, std::string &value, DWORD length = kPropertyLength);

/// Sets a property; an empty value removes it. In a deferred action nothing is set, which is logged and no error.
/// False when it cannot be set.
[[nodiscard]] bool SetProperty(const char *name, const std::string &value);

/// Sets a switch: a yes is "1", a no the empty value, which removes the property. Results as SetProperty.
[[nodiscard]] bool SetSwitch(const char *name, bool value);

struct PropertyValue {
  const char *name;
  const char *value;
};

/// Sets one property after the other, up to the first that cannot be set. Results as SetProperty.
[[nodiscard]] bool SetProperties(std::initializer_list<PropertyValue> properties);

/// Reads a kept property if its value is empty, and keeps it trimmed for the life of the load; ValueOf gives it.
[[nodiscard]] bool GetKeptProperty(Kept property);

}  // namespace zqv
