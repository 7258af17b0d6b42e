#pragma once

#include "base/result_code.h"

namespace zqv {

/// iwiTestLosingFeatures: publishes as ZQVLOSINGFEATURES, with commas between them, the features that an earlier
/// version's components live on in and that this installation does not leave on the machine. Where there are any, an
/// installation without dialogs needs REMOVEFEATURES to go on. Returns ERROR_SUCCESS, or ERROR_INSTALL_FAILURE when it
/// may not go on, which the user is told, or a property cannot be read or set.
ResultCode TestLosingFeatures();

}  // namespace zqv
