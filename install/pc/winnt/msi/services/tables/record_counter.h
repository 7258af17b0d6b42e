#pragma once

#include "runtime/property.h"

namespace zqv {

/// The property ZQVRECORDCOUNTER, which numbers the rows that the library adds to the installer's tables, so that no
/// two of one installation have the same key. All tables share it.

/// Reads the counter; one that is not there, or is no number, counts as 0. `length` as GetProperty has it. False,
/// with `counter` 0, when it cannot be read.
[[nodiscard]] bool ReadRecordCounter(int &counter, DWORD length = kPropertyLength);

/// Sets the counter to the number behind `counter`; in a deferred action that is only logged. False when it cannot be
/// set.
[[nodiscard]] bool AdvanceRecordCounter(int counter);

}  // namespace zqv
