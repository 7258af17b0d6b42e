#pragma once

#include "platform/win32.h"

namespace zqv {

/// Set to TRUE when copying has been cancelled, and never cleared by the library. All processes that have the library
/// loaded share this one variable, so that a cancel seen by one stops the copies of all: it is read anew each time.
extern volatile BOOL copyCancelled;

}  // namespace zqv
