#include "runtime/phase.h"

#include "runtime/log.h"
#include "runtime/session.h"

namespace zqv {

namespace {

Phase Announce(bool isCommitAPhase) {
  if (InRunMode(MSIRUNMODE_ROLLBACK)) {
    LogLine("Executing in rollback");
    return Phase::rollback;
  }
  if (isCommitAPhase && InRunMode(MSIRUNMODE_COMMIT)) {
    LogLine("Executing in commit");
    return Phase::commit;
  }
  if (InRunMode(MSIRUNMODE_SCHEDULED)) {
    LogLine("Deferred execution");
    return Phase::deferred;
  }
  LogLine("Executing in script generation");
  return Phase::scriptGeneration;
}

}  // namespace

Phase AnnouncePhase() { return Announce(false); }

Phase AnnouncePhaseOrCommit() { return Announce(true); }

}  // namespace zqv
