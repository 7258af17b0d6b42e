#pragma once

#include <string>

#include "base/result_code.h"

namespace zqv {

/// Temporary rows of the Registry table, with keys that the record counter numbers. Results as
/// StackDeleteRegistryValue.

/// Leaves a text value below HKEY_LOCAL_MACHINE to the installer: it writes the value when `component` is installed,
/// and deletes it when that is removed. The text arrives as it is, whatever it means to the table, whose values are
/// formatted texts.
[[nodiscard]] ResultCode StackRegistryValue(const std::string &key, const std::string &name, const std::string &text,
                                            const std::string &component);

/// Leaves the removal of a registry value below HKEY_LOCAL_MACHINE to the installer, for when `component` is removed:
/// then it deletes the values of the rows of its Registry table, and so that of a temporary one. (A row of its
/// RemoveRegistry table is carried out when the component is installed.)
[[nodiscard]] ResultCode StackRegistryRemoval(const std::string &key, const std::string &name,
                                              const std::string &component);

}  // namespace zqv
