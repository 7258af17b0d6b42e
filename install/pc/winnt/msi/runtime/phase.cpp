#include "runtime/phase.h"

#include "runtime/log.h"
#include "runtime/session.h"

namespace zqv {

Phase AnnouncePhase() {
  if (InRunMode(MSIRUNMODE_ROLLBACK)) {
    LogLine("Executing in rollback");
    return Phase::rollback;
  }
  if (InRunMode(MSIRUNMODE_SCHEDULED)) {
    LogLine("Deferred execution");
    return Phase::deferred;
  }
  LogLine("Executing in script generation");
  return Phase::scriptGeneration;
}

}  // namespace zqv
