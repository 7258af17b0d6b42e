#pragma once

#include "base/result_code.h"

namespace zqv {

/// The hand-over of properties to the deferred actions, through a file in the temporary folder. Each is the body of the
/// exported action named beside it, and belongs before the library's first deferred action.

/// iwiWriteDeferredProperties: writes the names and values of the properties that ZQVPROPERTYNAMELIST1 to 3 name.
/// Returns ERROR_SUCCESS, or ERROR_INSTALL_FAILURE without a complete file.
ResultCode WriteDeferredProperties();

/// iwiSetCustomActionData: sets the CustomActionData of every deferred action that is in a library to the file's path.
/// Returns ERROR_SUCCESS, ERROR_INSTALL_FAILURE when a property cannot be set, or the first failing call's code.
ResultCode SetCustomActionData();

}  // namespace zqv
