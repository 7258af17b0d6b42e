#pragma once

#include <string>

namespace zqv {

/// The product's program files, and what they tell of what is running. The program folder is ZQVPGMFOLDER, read once a
/// load.

/// The full path of a file in the program folder's "bin". Returns false when the folder cannot be read; an empty folder
/// gives a path that begins with a backslash.
bool ProductFile(const char *name, std::string &path);

/// True when a program of the product may be run: not from a folder that is not absolute, which would be looked for
/// wherever the process happens to be. For a path that ProductFile has given.
bool MayRunPrograms();

/// True when that file is held open; false also when the program folder cannot be read.
bool IsProductFileInUse(const char *name);

/// True while a product executable, or the shared runtime library on behalf of anything but the performance monitor, is
/// held open.
bool IsProductRunning();

/// True while the performance monitor has the product's extension loaded.
bool IsPerformanceMonitorRunning();

/// True while any queue manager runs.
bool iwiQueueManagersRunning();

/// True while any listener runs, and also when the program folder cannot be read: an unknown state of the listeners is
/// deliberately taken for running.
bool iwiListenersRunning();

/// Starts the service executable, without a window.
void iwiStartQvService();

}  // namespace zqv
