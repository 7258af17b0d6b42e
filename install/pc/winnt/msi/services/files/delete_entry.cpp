#include "services/files/delete_entry.h"

#include <span>

#include "base/path.h"
#include "runtime/log.h"
#include "runtime/progress.h"
#include "services/files/existence.h"
#include "services/files/search.h"
#include "services/tables/remove_file.h"

namespace zqv {

namespace {

constexpr int kFolderAttempts = 20;
constexpr DWORD kFolderPause = 1000;  // milliseconds

/// What an outcome means to the caller.
enum Meaning {
  kDone,     ///< success
  kDelayed,  ///< success, left to the restart
  kQuiet,    ///< success, with a line only if reports are wanted
  kMissing,  ///< success without a line, or a failure with one if reports are wanted
  kFailed,
};

/// Logs an outcome's line; only that of any other code shows the code.
using Line = void (*)(LPCSTR path, int error);

constexpr LONG kAnyOther = -1;  ///< the last row of each table

struct Outcome {
  LONG error;
  Meaning meaning;
  Line line;
};

constexpr Outcome kFileOutcomes[] = {
    {ERROR_SUCCESS, kDone, [](LPCSTR path, int) { Log("Deleted file: '%s'", path); }},
    {ERROR_FILE_NOT_FOUND, kQuiet, [](LPCSTR path, int) { Log("Delete file not found: '%s'", path); }},
    {ERROR_PATH_NOT_FOUND, kQuiet, [](LPCSTR path, int) { Log("Delete file not found: '%s'", path); }},
    {ERROR_INVALID_NAME, kQuiet, [](LPCSTR path, int) { Log("Invalid name: '%s'", path); }},
    {ERROR_SHARING_VIOLATION, kDelayed, [](LPCSTR path, int) { Log("***Delete file in use: '%s'", path); }},
    {ERROR_ACCESS_DENIED, kDelayed, [](LPCSTR path, int) { Log("***Delete file access denied: '%s'", path); }},
    {kAnyOther, kFailed, [](LPCSTR path, int error) { Log("***Delete file error: %d '%s'", error, path); }},
};

constexpr Outcome kRestartOutcomes[] = {
    {ERROR_SUCCESS, kDone, [](LPCSTR path, int) { Log("Stacked file for deletion upon reboot: '%s'", path); }},
    {ERROR_FILE_NOT_FOUND, kQuiet, [](LPCSTR path, int) { Log("MoveFileEx file not found: '%s'", path); }},
    {ERROR_PATH_NOT_FOUND, kQuiet, [](LPCSTR path, int) { Log("MoveFileEx file not found: '%s'", path); }},
    {ERROR_INVALID_NAME, kQuiet, [](LPCSTR path, int) { Log("MoveFileEx invalid name: '%s'", path); }},
    {kAnyOther, kFailed, [](LPCSTR path, int error) { Log("***MoveFileEx error: %d '%s'", error, path); }},
};

constexpr Outcome kFolderOutcomes[] = {
    {ERROR_SUCCESS, kDone, [](LPCSTR path, int) { Log("Deleted path: '%s'", path); }},
    {ERROR_FILE_NOT_FOUND, kMissing, [](LPCSTR path, int) { Log("***Delete path not found: '%s'", path); }},
    {ERROR_PATH_NOT_FOUND, kMissing, [](LPCSTR path, int) { Log("***Delete path not found: '%s'", path); }},
    {ERROR_DIR_NOT_EMPTY, kMissing, [](LPCSTR path, int) { Log("***Delete path not empty: '%s'", path); }},
    {ERROR_INVALID_NAME, kMissing, [](LPCSTR path, int) { Log("***Delete path not valid: '%s'", path); }},
    {ERROR_SHARING_VIOLATION, kFailed, [](LPCSTR path, int) { Log("***Delete path in use: '%s'", path); }},
    {ERROR_ACCESS_DENIED, kFailed, [](LPCSTR path, int) { Log("***Delete path access denied: '%s'", path); }},
    {kAnyOther, kFailed, [](LPCSTR path, int error) { Log("***Delete path error: %d '%s'", error, path); }},
};

constexpr Outcome kFolderNowOutcomes[] = {
    {ERROR_SUCCESS, kDone, [](LPCSTR path, int) { Log("Deleted path: '%s'", path); }},
    {ERROR_FILE_NOT_FOUND, kDone, [](LPCSTR path, int) { Log("Delete path not found: '%s'", path); }},
    {ERROR_PATH_NOT_FOUND, kDone, [](LPCSTR path, int) { Log("Delete path not found: '%s'", path); }},
    {ERROR_DIR_NOT_EMPTY, kDone, [](LPCSTR path, int) { Log("Delete path not empty: '%s'", path); }},
    {ERROR_INVALID_NAME, kFailed, [](LPCSTR path, int) { Log("***Delete path not valid: '%s'", path); }},
    {ERROR_SHARING_VIOLATION, kFailed, [](LPCSTR path, int) { Log("***Delete path in use: '%s'", path); }},
    {ERROR_ACCESS_DENIED, kFailed, [](LPCSTR path, int) { Log("***Delete path access denied: '%s'", path); }},
    {kAnyOther, kFailed, [](LPCSTR path, int error) { Log("***Delete path error: %d '%s'", error, path); }},
};

const Outcome &Find(std::span<const Outcome> table, LONG error) {
  std::size_t row = 0;
  while (table[row].error != error && table[row].error != kAnyOther) {
    ++row;
  }
  return table[row];
}

/// Logs the outcome where that is wanted; gives the deletion's result.
bool Settle(const Outcome &outcome, LONG error, const std::string &path, bool report) {
  const bool missing = outcome.meaning == kQuiet || outcome.meaning == kMissing;
  if (!missing || report) {
    outcome.line(path.c_str(), static_cast<int>(error));
  }
  return outcome.meaning != kFailed && !(outcome.meaning == kMissing && report);
}

/// Makes a call on a path, and gives its code.
template <typename Call>
LONG CodeOf(Call call, const std::string &path) {
  if (IsTooLong(path)) {
    return kPathTooLong;
  }
  SetLastError(ERROR_SUCCESS);
  return call(path.c_str()) != FALSE ? ERROR_SUCCESS : static_cast<LONG>(GetLastError());
}

void Store(LONG error, int *place) {
  if (place != nullptr) {
    *place = static_cast<int>(error);
  }
}

void Count(int *ticks) {
  if (ticks != nullptr) {
    *ticks = AddTicks(*ticks, kTicksPerUnit);
  }
}

/// Removes a folder that is empty, or is a link; logs each outcome but that it is missing.
LONG RemoveFolder(const std::string &path) {
  if (!IsFolderLink(path) && !iwiIsFolderEmpty(path)) {
    return ERROR_DIR_NOT_EMPTY;
  }
  LONG error = ERROR_SUCCESS;
  for (int attempt = 0; attempt < kFolderAttempts; ++attempt) {
    error = CodeOf(RemoveDirectoryA, path);
    Settle(Find(kFolderOutcomes, error), error, path, false);
    if (error != ERROR_SHARING_VIOLATION) {
      break;
    }
    Log("Delete path in use; waiting: '%s'", path.c_str());
    Sleep(kFolderPause);
  }
  return error;
}

bool StackFolder(const DeletionRequest &request) {
  std::string path = request.path;
  if (!path.empty() && !EndsInBackslash(path)) {
    path += '\\';
  }
  return iwiStackFolderForDeletion(path, request.component, request.installMode) == ERROR_SUCCESS;
}

}  // namespace

bool DeleteOneFile(const DeletionRequest &request) {
  const std::string &path = request.path;
  if (!request.execute) {
    return !iwiFileExists(path) ||
           iwiStackFilesForDeletion(path, request.component, request.installMode) == ERROR_SUCCESS;
  }
  if (request.countOnly) {
    Count(request.ticks);
    return true;
  }
  SendActionData(path);
  const LONG error = CodeOf(DeleteFileA, path);
  const Outcome &outcome = Find(kFileOutcomes, error);
  const bool result = Settle(outcome, error, path, request.report);
  if (outcome.meaning == kDelayed || outcome.meaning == kFailed) {
    static_cast<void>(iwiDeleteAtReboot(path, request.report, nullptr));
  }
  SendProgress(0, kTicksPerUnit);
  Store(error, request.error);
  return result;
}

bool iwiDeleteFolder(const DeletionRequest &request) {
  const std::string &path = request.path;
  if (!request.execute) {
    return !request.countOnly || StackFolder(request);
  }
  if (request.countOnly) {
    Count(request.ticks);
    return true;
  }
  SendActionData(path);
  const LONG error = RemoveFolder(path);
  SendProgress(0, kTicksPerUnit);
  Store(error, request.error);
  const Outcome &outcome = Find(kFolderOutcomes, error);
  if (outcome.meaning == kMissing) {
    return Settle(outcome, error, path, request.report);
  }
  return outcome.meaning == kDone;
}

bool iwiDeleteAtReboot(const std::string &path, bool report, int *error) {
  const auto delay = [](LPCSTR file) { return MoveFileExA(file, nullptr, MOVEFILE_DELAY_UNTIL_REBOOT); };
  const LONG code = CodeOf(delay, path);
  Store(code, error);
  return Settle(Find(kRestartOutcomes, code), code, path, report);
}

bool iwiRemoveFolderNow(const std::string &path) {
  const LONG error = CodeOf(RemoveDirectoryA, path);
  return Settle(Find(kFolderNowOutcomes, error), error, path, true);
}

}  // namespace zqv
