#pragma once

#include <string>

#include "base/result_code.h"

namespace zqv {

/// Leaves the removal of a registry value to the installer: a temporary row of its RemoveRegistry table, which it
/// carries out when `component` is installed. `key` may begin with one of the four root names that the table knows, in
/// capitals, and a backslash; any other key is one below HKEY_LOCAL_MACHINE. A row that cannot be added still advances
/// the record counter. Returns ERROR_SUCCESS, ERROR_INSTALL_FAILURE where the counter cannot be read or set, or the
/// installer's own code where adding the row failed.
[[nodiscard]] ResultCode StackDeleteRegistryValue(const std::string &key, const std::string &name,
                                                  const std::string &component);

}  // namespace zqv
