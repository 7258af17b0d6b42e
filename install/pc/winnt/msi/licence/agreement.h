#pragma once

#include "base/result_code.h"

namespace zqv {

/// iwiCheckLicenseAgree: a first installation that is not administrative goes on only when the user has accepted the
/// licence. With the full user interface its dialogs ask; without, AGREETOLICENSE must be a yes, on the command line or
/// in the response file, and AgreeToLicense becomes "Yes". Returns ERROR_INSTALL_FAILURE, with a message, when it is no
/// yes, and also when a property cannot be read or set.
ResultCode CheckAgreement();

}  // namespace zqv
