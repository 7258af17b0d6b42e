#pragma once

#include "base/result_code.h"

namespace zqv {

/// What follows primary initialisation. Each is the body of the exported action named beside it.

/// iwiInstallInitSec: makes the lists of features that a response file gives the engine's own, unless others are given
/// already, a person chooses in dialogs, or the product is installed. Returns ERROR_SUCCESS, or ERROR_INSTALL_FAILURE
/// when the response file would remove everything, or a property cannot be read or set.
ResultCode InitialiseSecondary();

/// iwiInstallInitScript: makes sure of what the script's generation stands on: the temporary folder, and what is known
/// of the previous installation. Returns ERROR_SUCCESS, or ERROR_INSTALL_FAILURE when a property cannot be read or set.
ResultCode InitialiseScript();

/// iwiCheckWebAdmin: tells by ZQVWEBADMIN, "1" or empty, whether the installed product has the web administration.
ResultCode CheckWebAdmin();

/// iwiSetZqvRemove: sets ZQVREMOVE anew, once the features are chosen. Returns ERROR_SUCCESS, or ERROR_INSTALL_FAILURE
/// when a property cannot be read or set.
ResultCode SetZqvRemove();

}  // namespace zqv
