#pragma once

#include "base/load_state.h"

namespace zqv {

extern LoadStateEntry &removalState;

/// Publishes as ZQVREMOVE, "1" or "0", whether all of the product is removed, as REMOVE says, which is read once a
/// load. False when a property cannot be read or set.
[[nodiscard]] bool PublishWholeRemoval();

/// The same with REMOVE read again.
[[nodiscard]] bool RepublishWholeRemoval();

}  // namespace zqv
