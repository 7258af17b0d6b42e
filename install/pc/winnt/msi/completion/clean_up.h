#pragma once

#include "base/result_code.h"

namespace zqv {

/// The ends of an installation: what the library has left in the temporary folder goes. All of it is deleted by its
/// exact name, nothing by a pattern, and never a trace log. What cannot be deleted is logged, and stays. Each is the
/// body of the exported action named beside it. Returns ERROR_SUCCESS, or ERROR_INSTALL_FAILURE when a property cannot
/// be read or set.

/// iwiCleanUp: ends the temporary log, which iwiUnSetTempLogPath has folded away where the installation has succeeded,
/// and takes the marker that cancels copies away. At any other end it does the folding, deletes the answers that nobody
/// has asked for, and goes on with the work of iwiCleanUpFinal, unless a script has been planned whose rollback is
/// still to come: that needs those files, and does the work itself when it has come to this action.
ResultCode CleanUp();

/// iwiCleanUpFinal: the message library, the catalogue, the value list, and psapi.dll where it has been unpacked
/// (ZQVPSAPI).
ResultCode CleanUpFinal();

/// iwiCleanUpSuccess: the folders of what was on its way and of what was saved for the support engineer; and the
/// decisions about what an earlier version has left are forgotten.
ResultCode CleanUpSuccess();

}  // namespace zqv
