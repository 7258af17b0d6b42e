#pragma once

#include "base/result_code.h"

namespace zqv {

/// iwiCheckVolumeLabel: tells by ZQVVOLUMEOK, "1" or empty, whether the installation's source is on the volume whose
/// label ZQVVOLUMELABEL expects, in any case. An empty expectation is met without asking. A volume that cannot be asked
/// is not the right one. Returns ERROR_SUCCESS, or ERROR_INSTALL_FAILURE when a property cannot be read or set.
ResultCode CheckVolumeLabel();

}  // namespace zqv
