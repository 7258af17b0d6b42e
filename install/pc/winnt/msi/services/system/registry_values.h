#pragma once

#include <functional>
#include <string>

#include "platform/win32.h"

namespace zqv {

/// The value of a registry key that a walk has come to. Its data is there until the walk goes on.
struct EnumeratedValue {
  std::string name;
  DWORD type = 0;
  const BYTE *data = nullptr;
  DWORD size = 0;  ///< in bytes

  bool IsText() const { return type == REG_SZ || type == REG_EXPAND_SZ; }

  /// The value's text up to its terminator, if it has one. A value of another type has no text.
  std::string Text() const;
};

/// Hands each value of the key `path` below HKEY_LOCAL_MACHINE to `visit`, in the order in which the registry has them.
/// True when the walk came to the last value; there is none where there is no such key. False, with a line, otherwise.
[[nodiscard]] bool VisitRegistryValues(const std::string &path,
                                       const std::function<void(const EnumeratedValue &value)> &visit);

}  // namespace zqv
