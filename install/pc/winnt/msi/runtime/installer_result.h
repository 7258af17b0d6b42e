#pragma once

#include "base/result_code.h"

namespace zqv {

/// The check of an installer call's answer: one other than ERROR_SUCCESS is stored in `result` and logged with the
/// call's name and `argument`. Returns the answer unchanged.
ResultCode iwiCheckMsiResult(const char *call, const char *argument, ResultCode answer, ResultCode &result);

/// The same for a series of calls whose first failure counts: a later one is logged only.
ResultCode CheckFirstFailure(const char *call, const char *argument, ResultCode answer, ResultCode &result);

}  // namespace zqv
