#pragma once

#include "base/result_code.h"

namespace zqv {

/// The actions that settle where the product is installed. Each is the body of the exported action named beside it. A
/// property that cannot be read or set, and a directory that the engine does not move, give ERROR_INSTALL_FAILURE.

/// iwiSetDirs: moves the directories to where the user wants them, by PGMFOLDER, DATFOLDER and LOGFOLDER or the
/// response file. A folder that is none moves nothing and ends the installation with a message.
ResultCode SetDirs();

/// iwiSetRegistryDirs: moves the directories that have no place yet to where the installed product is.
ResultCode SetRegistryDirs();

/// iwiSetAdminDir: gives an administrative installation the folder that SERVERFOLDER names.
ResultCode SetAdminDir();

/// iwiRecalcDatFolder: gives the data folder its proper place, once the program folder has been chosen in a dialog.
ResultCode RecalcDatFolder();

/// iwiRecalcLogFolder: gives the log folder its proper place, once the data folder has been chosen in a dialog.
ResultCode RecalcLogFolder();

/// iwiFindExistingLogFolder: finds the installed product's log folder again, if it is still there.
ResultCode FindExistingLogFolder();

/// iwiValidatePath: tells a dialog, by ZQVPATHVALID, whether the folder in the property that ZQVPATHTOCHECK names can
/// be one.
ResultCode ValidatePath();

}  // namespace zqv
