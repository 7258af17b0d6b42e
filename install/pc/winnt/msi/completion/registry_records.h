#pragma once

#include "base/result_code.h"

namespace zqv {

/// What the product's key tells of the installed product. Each is the body of the exported action named beside it.
/// Returns ERROR_SUCCESS, or ERROR_INSTALL_FAILURE when a property cannot be read or set or a row cannot be added.

/// iwiStackRegistryUpdates: leaves to the installer the record of the folders and of the level, which it writes when
/// the base feature is installed, and deletes when that is removed.
ResultCode StackRegistryUpdates();

/// iwiStackSetHighContrast: the same with the user's choice of high contrast (ZQVSETHIGHCONTRAST), if he has made one.
ResultCode StackSetHighContrast();

/// iwiRegistryFix: the recorded level is that of the package, also where the installer writes no record. The immediate
/// pass hands over what it was (ZQVOLDVRMF, empty: none; "?": something that a rollback leaves as it is by then), the
/// deferred pass sets it, and a rollback puts it back. A value that cannot be written is logged, and no failure.
ResultCode RegistryFix();

}  // namespace zqv
