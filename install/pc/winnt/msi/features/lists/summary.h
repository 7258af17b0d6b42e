#pragma once

#include "base/result_code.h"

namespace zqv {

/// iwiListInstallSummary: writes the list of what is about to be done anew, a row each:
///
/// - the setup's title; the program, the data and the log folder;
///
/// - each of the product's features that is going to be installed, then each that is going to be removed, by its title;
///
/// - that a restart may be needed: an earlier action has found so, the installer knows of one by now, or Windows owes
///   one for the program folder, since what is installed there may not last until it is restarted;
///
/// - the trace log.
///
/// What has no value has no row. Returns ERROR_SUCCESS, or ERROR_INSTALL_FAILURE when a property cannot be read.
ResultCode ListInstallSummary();

}  // namespace zqv
