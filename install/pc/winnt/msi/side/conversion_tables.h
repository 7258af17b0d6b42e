#pragma once

#include "base/result_code.h"

namespace zqv {

/// iwiDirectBackupCcsid: its deferred pass copies the conversion tables of an earlier version, "conv\*.tbl" of its data
/// folder (ZQVPREVDAT), to "zqvsave\conv" in the temporary folder; the immediate pass deletes an earlier such copy and
/// plans the progress. In a rollback there is nothing to do. Returns ERROR_SUCCESS, also where there are none;
/// ERROR_INSTALL_FAILURE when a property cannot be read, the folder cannot be used or a file cannot be copied;
/// ERROR_INSTALL_USEREXIT when copying was cancelled.
ResultCode BackUpConversionTables();

}  // namespace zqv
