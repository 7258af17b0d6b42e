#include "runtime/actions/log_actions.h"

#include <algorithm>

#include "base/path.h"
#include "base/read_line.h"
#include "base/text.h"
#include "features/answers/response_property.h"
#include "platform/c_file.h"
#include "platform/owner.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "runtime/temp_name.h"
#include "services/files/create.h"
#include "services/files/delete_entry.h"

namespace zqv {

namespace {

constexpr char kNoLog[] = "none";
constexpr char kMergedLogName[] = "zqvilogn.txt";
constexpr std::size_t kMergedLineLength = 515;

/// A log that cannot be deleted, which is logged, ends no action.
void DeleteLog(const std::string &path, bool report) {
  static_cast<void>(DeleteOneFile({.execute = true, .path = path, .report = report}));
}

/// Reads a switch that names a log: the value without line breaks, blanks and quotes.
bool ReadLogSwitch(const char *name, std::string &value) {
  if (!GetPropertyWithResponse(name, value)) {
    return false;
  }
  value = Trimmed(std::string(StripBlanks(CutAtLineBreak(value))));
  if (value.size() >= kPropertyLength) {
    Log("***%s value '%s' is longer than a path", name, value.c_str());
    return false;
  }
  return true;
}

/// Counts the characters that a text has, as it is read, and leaves it at its beginning. False when it cannot be read.
bool Measure(std::FILE *file, std::size_t &length) {
  while (std::getc(file) != EOF) {
    ++length;
  }
  const bool read = std::ferror(file) == 0;
  std::rewind(file);
  return read;
}

/// False, with a line, when some of the file's lines could not be read.
bool MergeLines(const std::string &path) {
  OwnedStream file(OpenCFile(path.c_str(), "rt"));
  if (!file) {
    Log("Can't find '%s'", path.c_str());
    return true;
  }
  // The file may be one of the logs that the lines go to: it is read as far as it goes now.
  std::size_t left = 0;
  bool isWhole = Measure(file.Get(), left);
  Log("Messages from temporary log file '%s':", path.c_str());
  std::string line;
  while (const std::size_t read = ReadLine(file.Get(), line, std::min(left, kMergedLineLength))) {
    LogRaw(">>" + std::string(CutAtLineBreak(line)));
    left -= read;
  }
  isWhole = isWhole && std::ferror(file.Get()) == 0;
  file.Reset();
  LogLine("End of messages from temporary log file.");
  if (!isWhole) {
    Log("***Can't read all of '%s'", path.c_str());
  }
  return isWhole;
}

}  // namespace

void MergeTempLog(bool deleteAfter, std::string path) {
  if (path.empty()) {
    // A folder that cannot be read is one that there is not; the read has left its line.
    static_cast<void>(GetKeptProperty(Kept::dataFolder));
    const std::string &folder = ValueOf(Kept::dataFolder);
    if (!folder.empty()) {
      path = folder + "\\" + kMergedLogName;
    }
  }
  if (path.empty()) {
    LogLine("No log file available");
    return;
  }
  if (MergeLines(path) && deleteAfter) {
    DeleteLog(path, true);
  }
}

ResultCode StartLogs() {
  std::string trace;
  if (!ReadLogSwitch("INSTALLTRACE", trace)) {
    return ERROR_INSTALL_FAILURE;
  }
  std::string published;
  if (!EqualNoCase(trace, kNoLog)) {
    std::string &path = ValueOf(Kept::traceLog);
    path = trace;
    if (!path.empty()) {
      iwiCreateFolderTree(path);
      DeleteLog(path, false);
    } else {
      path = TempName(false, "zqvt", ".log");
    }
    published = path;
  }
  if (!SetProperty(NameOf(Kept::traceLog), published)) {
    return ERROR_INSTALL_FAILURE;
  }

  std::string user;
  if (!ReadLogSwitch("INSTALLLOG", user)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (!user.empty() && !EqualNoCase(user, kNoLog)) {
    ValueOf(Kept::userLog) = user;
  }
  // Deliberate: whatever was asked for, the user log lives only as long as the action that names it.
  return ResultOf(SetProperty(NameOf(Kept::userLog), ""));
}

ResultCode SetTempLogPath() {
  std::string &path = ValueOf(Kept::tempLog);
  path = TempLogName();
  if (!path.empty()) {
    DeleteLog(path, false);
  }
  return ResultOf(SetProperty(NameOf(Kept::tempLog), path));
}

ResultCode UnSetTempLogPath() {
  const char *name = NameOf(Kept::tempLog);
  if (!SetProperty(name, "")) {
    return ERROR_INSTALL_FAILURE;
  }
  std::string path;
  if (!GetTrimmedProperty(name, path)) {
    return ERROR_INSTALL_FAILURE;
  }
  ValueOf(Kept::tempLog) = path;
  if (!path.empty()) {
    return ERROR_SUCCESS;
  }
  path = TempLogName();
  std::string keep;
  if (!GetProperty("ZQVKEEPTEMPLOG", keep, kCounterLength)) {
    return ERROR_INSTALL_FAILURE;
  }
  MergeTempLog(keep.empty(), path);
  return ERROR_SUCCESS;
}

ResultCode PrintSummary() { return ResultOf(GetKeptProperty(Kept::tempFolder)); }

}  // namespace zqv
