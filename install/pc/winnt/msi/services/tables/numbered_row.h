#pragma once

#include <functional>
#include <optional>

#include "base/result_code.h"
#include "runtime/property.h"

namespace zqv {

/// Rows with keys that the property ZQVRECORDCOUNTER numbers, so that no two of one installation have the same. All
/// tables share it.

/// Reads the counter (one that is not there, or is no number, counts as 0; `length` as GetProperty has it), has `add`
/// add a row whose key is `prefix` and the number, and sets the counter to the next number; in a deferred action that
/// is only logged. `add` gives the outcome of adding the row, or nothing when it did not come to that: then the counter
/// stays. Returns that outcome, or ERROR_INSTALL_FAILURE when there is none or the counter cannot be read or set.
[[nodiscard]] ResultCode AddNumberedRow(const char *prefix,
                                        const std::function<std::optional<ResultCode>(const char *key)> &add,
                                        DWORD length = kPropertyLength);

}  // namespace zqv
