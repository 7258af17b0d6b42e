#pragma once

#include <string>

#include "base/result_code.h"

namespace zqv {

/// Leaves the removal of a registry value below HKEY_LOCAL_MACHINE to the installer, for when `component` is removed:
/// then it deletes the values of the rows of its Registry table, and so that of a temporary one. (A row of its
/// RemoveRegistry table is carried out when the component is installed.) Results as StackDeleteRegistryValue.
[[nodiscard]] ResultCode StackRegistryRemoval(const std::string &key, const std::string &name,
                                              const std::string &component);

}  // namespace zqv
