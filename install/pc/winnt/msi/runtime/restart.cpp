#include "runtime/restart.h"

#include <string>

#include "runtime/log.h"
#include "runtime/property.h"
#include "runtime/session.h"

namespace zqv {

namespace {

constexpr DWORD kReplacedFilesLength = 64;

}  // namespace

bool AskRestart(bool &needed) {
  std::string replaced;
  if (!GetProperty("ReplacedInUseFiles", replaced, kReplacedFilesLength)) {
    return false;
  }
  const bool scheduled = InRunMode(MSIRUNMODE_REBOOTATEND);
  if (scheduled) {
    LogLine("Reboot is scheduled");
  }
  needed = scheduled || !replaced.empty();
  return true;
}

}  // namespace zqv
