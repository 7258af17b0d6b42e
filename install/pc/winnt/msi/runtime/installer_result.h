#pragma once

#include "platform/win32.h"

namespace zqv {

/// The check of an installer call's answer: one other than ERROR_SUCCESS is stored in `result` and logged with the
/// call's name and `argument`. Returns the answer unchanged.
UINT iwiCheckMsiResult(const char *call, const char *argument, UINT answer, UINT &result);

/// The same for a series of calls whose first failure counts: a later one is logged only.
UINT CheckFirstFailure(const char *call, const char *argument, UINT answer, UINT &result);

}  // namespace zqv
