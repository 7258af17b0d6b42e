#pragma once

#include "base/result_code.h"

namespace zqv {

/// What the product makes while it runs, and the installer knows nothing of: these actions leave its removal to the
/// installer, by rows of its RemoveFile table. Each is the body of the exported action named beside it. Nothing is
/// stacked below a folder that the guard refuses, and no link is entered. What cannot be stacked is logged, and stays.
/// Returns ERROR_SUCCESS, or ERROR_INSTALL_FAILURE when a property cannot be read or set.

/// iwiStackCleanUpServer: where the server goes, its traces and error logs.
ResultCode StackCleanUpServer();

/// iwiStackCleanUpCcsid: where the product goes, its conversion tables.
ResultCode StackCleanUpConversionTables();

/// iwiStackCleanUpFeatures: for each language whose documentation goes, the help viewer's index of it.
ResultCode StackCleanUpDocumentation();

/// iwiStackDeleteCsds: where the product goes, the backup folders of its maintenance, and their record. Returns
/// ERROR_INSTALL_FAILURE also when a row for a value of the registry cannot be added.
ResultCode StackDeleteMaintenance();

/// iwiStackDeleteWebScripts: where the user does not keep them (ZQVLEAVEWEBDATAINSTALL), the scripts of the web
/// administration.
ResultCode StackDeleteWebScripts();

/// iwiStackDeleteMigFolders: what an earlier installation has left in the library's own folders. The rows are for a
/// removal only, since in an installation deferred actions still need what is in them.
ResultCode StackDeleteOwnFolders();

/// iwiStackCleanUpFinal, the last of all: where the product goes and the user does not keep the data, what is left of
/// the data folder.
ResultCode StackCleanUpFinal();

/// iwiUninstallCleanUp: where the product goes, its logs.
ResultCode UninstallCleanUp();

}  // namespace zqv
