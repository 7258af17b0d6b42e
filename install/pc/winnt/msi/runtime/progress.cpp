#include "runtime/progress.h"

#include <algorithm>
#include <limits>

#include "platform/owner.h"
#include "runtime/record.h"
#include "runtime/session.h"

namespace zqv {

int AddTicks(int total, int ticks) {
  constexpr int kMost = std::numeric_limits<int>::max();
  return total > kMost - ticks ? kMost : total + ticks;
}

int AddUnits(int total, int units) {
  constexpr int kMost = std::numeric_limits<int>::max() / kTicksPerUnit;
  return AddTicks(total, std::min(units, kMost) * kTicksPerUnit);
}

void SendProgress(MSIHANDLE record, int ticks) {
  if (!InRunMode(MSIRUNMODE_SCHEDULED)) {
    return;
  }
  OwnedInstallerHandle own;
  if (record == 0) {
    own = MakeRecord({kProgressIncrement, ticks, 0});
    if (!own) {
      return;
    }
    record = own.Get();
  }
  MsiProcessMessage(Session().handle, INSTALLMESSAGE_PROGRESS, record);
}

void SendActionData(const std::string &text) {
  if (!InRunMode(MSIRUNMODE_SCHEDULED)) {
    return;
  }
  const OwnedInstallerHandle record = MakeRecord({text.c_str()});
  if (record) {
    MsiProcessMessage(Session().handle, INSTALLMESSAGE_ACTIONDATA, record.Get());
  }
}

}  // namespace zqv
