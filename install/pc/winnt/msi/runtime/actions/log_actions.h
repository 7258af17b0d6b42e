#pragma once

#include <string>

#include "base/result_code.h"

namespace zqv {

/// The actions that open, fold away and point the library's logs. Each is the body of the exported action named beside
/// it, and gives ERROR_SUCCESS or ERROR_INSTALL_FAILURE.

/// iwiStartLogs: begins the trace log that INSTALLTRACE asks for (a path; empty: a new file in the temporary folder;
/// "none": no trace) and publishes it as ZQVUSERTRACEPATH.
ResultCode StartLogs();

/// iwiSetTempLogPath: begins the temporary log, which serves until the final folders are known, as ZQVTEMPLOGPATH.
ResultCode SetTempLogPath();

/// iwiUnSetTempLogPath: ends the temporary log and merges it into the lasting ones.
ResultCode UnSetTempLogPath();

/// iwiPrintSummary: reads the temporary folder.
ResultCode PrintSummary();

/// Copies the lines of the file `path` into the current logs, unstamped and marked ">>". An empty path stands for
/// "zqvilogn.txt" in the data folder. `deleteAfter` deletes the file, unless some of it could not be read.
void MergeTempLog(bool deleteAfter, std::string path);

}  // namespace zqv
