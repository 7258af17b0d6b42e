#pragma once

#include "base/result_code.h"

namespace zqv {

/// iwiMigrateRegistry: where there is an earlier version, records its level (ZQVPREVVERSION) in the product's registry
/// key as MigratedFrom, so that the product's first start knows what it comes from. The immediate pass hands over what
/// the value was, the deferred pass sets it, and a rollback puts it back. A removal of the whole product takes it away.
/// Returns ERROR_SUCCESS, also when the value cannot be set, which is logged; or ERROR_INSTALL_FAILURE when a property
/// cannot be read or set.
ResultCode MigrateRegistry();

}  // namespace zqv
