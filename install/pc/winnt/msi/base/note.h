#pragma once

#include "platform/compiler.h"

namespace zqv {

/// Where a routine tells its steps, in printf's form: to the log, or to nobody where the writer of the log itself asks.
using Note ZQV_PRINTF(1, 2) = void (*)(const char *format, ...);

}  // namespace zqv
