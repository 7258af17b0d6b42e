#pragma once

#include "base/result_code.h"

namespace zqv {

/// iwiDeletePrevious: where the earlier version's program folder (ZQVPREVPGM) is another one than the new, stacks the
/// removal of its folders "bin", "uninst" and "doc" with all that is in them, and of itself, if it is empty then. One
/// of the three that is a folder of programs or data, or above one, is let be. Returns ERROR_SUCCESS, or
/// ERROR_INSTALL_FAILURE when a property cannot be read.
ResultCode DeletePrevious();

}  // namespace zqv
