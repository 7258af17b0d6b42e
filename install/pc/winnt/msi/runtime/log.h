#pragma once

#include <string>

#include "base/load_state.h"
#include "platform/compiler.h"

namespace zqv {

/// The one writer of log lines. Every line goes to the installer's log and to each of up to three files: the trace log,
/// the user log, and a third one, usually the temporary log. A file is opened and closed for each line, so that it is
/// complete even when the process is killed.

extern LoadStateEntry &logState;

/// Writes "HH:MM:SS QVCA info ACTION: text". The text is data, never a format. A line logged while a line is being
/// written is dropped; one that cannot be written is lost: nobody could be told.
void LogLine(const std::string &text);

/// LogLine with printf's formatting.
void Log(const char *format, ...) ZQV_PRINTF(1, 2);

/// Writes a text to the same places without a stamp; nothing while a line is being written. A text that begins with a
/// line feed is written as an empty line and the rest.
void LogRaw(const std::string &text);

/// Makes the third log "zqvmjpse.txt" in the data folder.
void UseDataFolderLog();

/// Leaves no third log: the temporary one is gone.
void RetireTempLog();

}  // namespace zqv
