#pragma once

#include "base/result_code.h"

namespace zqv {

/// The setup types: each sets the install level and then the state of each feature that it has a say in. Each is the
/// body of the exported action named beside it. A feature that cannot be set does not keep the others from being set.
/// Returns ERROR_SUCCESS, or ERROR_INSTALL_FAILURE when a feature could not be set, or none because a property could
/// not be read.

/// iwiSetFeaturesMinimum: what a working installation needs.
ResultCode SetFeaturesMinimum();

/// iwiSetFeaturesTypical: the same with the explorer of a server, the toolkit and Java messaging.
ResultCode SetFeaturesTypical();

}  // namespace zqv
