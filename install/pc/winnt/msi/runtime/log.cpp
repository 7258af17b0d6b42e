#include "runtime/log.h"

#include <cstdarg>
#include <ctime>

#include "base/text.h"
#include "platform/c_file.h"
#include "platform/owner.h"
#include "runtime/property_source.h"
#include "runtime/session.h"

namespace zqv {

namespace {

constexpr char kLevel[] = "info";
constexpr char kDataFolderLogName[] = "zqvmjpse.txt";

struct State {
  bool dataFolderLog = false;
  bool tempLogRetired = false;
  bool writing = false;
};
constinit LoadState<State> state;

/// Holds the writer's guard, also when a line is abandoned by an exception.
class Writing {
 public:
  Writing() { state->writing = true; }
  ~Writing() { state->writing = false; }
  Writing(const Writing &) = delete;
  Writing &operator=(const Writing &) = delete;
};

/// The writer's own reads leave no lines.
void Drop(const char * /*format*/, ...) {}

std::string TimeOfDay() {
  SYSTEMTIME now;
  GetLocalTime(&now);
  std::tm time{};
  time.tm_hour = now.wHour;
  time.tm_min = now.wMinute;
  time.tm_sec = now.wSecond;
  char text[16];
  std::strftime(text, sizeof text, "%H:%M:%S", &time);
  return text;
}

/// The name of the running action and a colon.
std::string ActionField() {
  const std::string &name = RunningAction();
  return (name.empty() ? "(CaProlog)" : name) + ":";
}

void WriteInstallerLog(const std::string &line) {
  const OwnedInstallerHandle record(MsiCreateRecord(1));
  if (record && MsiRecordSetStringA(record.Get(), 1, line.c_str()) == ERROR_SUCCESS) {
    MsiProcessMessage(Session().handle, INSTALLMESSAGE_INFO, record.Get());
  }
}

void AppendToFile(const std::string &path, const std::string &line) {
  if (path.empty()) {
    return;
  }
  const OwnedStream file(OpenCFile(path.c_str(), "a+"));
  if (!file) {
    return;
  }
  if (!line.empty() && line.front() == '\n') {
    std::fprintf(file.Get(), "\n%s\n", line.c_str() + 1);
  } else {
    std::fprintf(file.Get(), "%s\n", line.c_str());
  }
}

/// The path of the third log; empty when there is none. False when a property that it hangs on cannot be read.
bool FindThirdLog(std::string &path) {
  path.clear();
  if (state->dataFolderLog) {
    if (!FillKept(Kept::dataFolder, Drop)) {
      return false;
    }
    const std::string &folder = ValueOf(Kept::dataFolder);
    if (!folder.empty()) {
      path = folder + "\\" + kDataFolderLogName;
    }
    ValueOf(Kept::tempLog) = path;
    return true;
  }
  if (state->tempLogRetired) {
    ValueOf(Kept::tempLog).clear();
    return true;
  }
  if (!FillKept(Kept::tempLog, Drop)) {
    return false;
  }
  path = ValueOf(Kept::tempLog);
  return true;
}

void WriteRaw(const std::string &line) {
  WriteInstallerLog(line);
  std::string thirdLog;
  if (!FillKept(Kept::traceLog, Drop) || !FillKept(Kept::userLog, Drop) || !FindThirdLog(thirdLog)) {
    return;
  }
  AppendToFile(ValueOf(Kept::traceLog), line);
  AppendToFile(ValueOf(Kept::userLog), line);
  AppendToFile(thirdLog, line);
}

}  // namespace

constinit LoadStateEntry &logState = state;

void LogLine(const std::string &text) {
  if (state->writing) {
    return;
  }
  const Writing guard;
  const std::string stamp = Format("%s QVCA %s %s", TimeOfDay().c_str(), kLevel, ActionField().c_str()) + " ";
  if (text.starts_with("***")) {
    // Deliberate: the guard is held, so LogRaw drops both lines and no file ever shows the banner.
    LogRaw(stamp + "=============|||| Error, failure, problem, warning ||||=============");
    LogRaw(stamp + "             vvvv                                  vvvv");
  }
  WriteRaw(stamp + text);
}

void Log(const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const std::string text = FormatList(format, arguments);
  va_end(arguments);
  LogLine(text);
}

void LogRaw(const std::string &text) {
  if (!state->writing) {
    WriteRaw(text);
  }
}

void UseDataFolderLog() { state->dataFolderLog = true; }

void RetireTempLog() { state->tempLogRetired = true; }

}  // namespace zqv
