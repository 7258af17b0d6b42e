#pragma once

#include "base/result_code.h"

namespace zqv {

/// The settings of an earlier version, its files *.ini, on their way to the data folder of this one. Each is the body
/// of the exported action named beside it.

/// iwiPrepareMigrateIni, before anything is removed: copies the files of the earlier data folder to a folder of the
/// library's own. Returns ERROR_SUCCESS, also where there is nothing to migrate, ERROR_INSTALL_FAILURE, or
/// ERROR_INSTALL_USEREXIT when copying was cancelled.
ResultCode PrepareMigrateIni();

/// iwiDirectMigrateScripts. The immediate pass settles which of these files the data folder does not have, and the
/// deferred pass copies just them, over a default of the package too. Before each copy the file's name goes into a
/// list, so that a rollback deletes what the list names and nothing else; a commit deletes the list. Results as above.
ResultCode DirectMigrateScripts();

}  // namespace zqv
