#include "runtime/progress.h"

#include <algorithm>
#include <limits>

#include "runtime/log.h"
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

void AnnounceTicks(int ticks) {
  Log("Total ticks = %d", ticks);
  SendRecord(INSTALLMESSAGE_PROGRESS, {kProgressAddition, ticks, 0, 0});
}

void SendProgress(MSIHANDLE record, int ticks) {
  if (!InRunMode(MSIRUNMODE_SCHEDULED)) {
    return;
  }
  if (record == 0) {
    SendRecord(INSTALLMESSAGE_PROGRESS, {kProgressIncrement, ticks, 0});
  } else {
    MsiProcessMessage(Session().handle, INSTALLMESSAGE_PROGRESS, record);
  }
}

void SendActionData(const std::string &text) {
  if (InRunMode(MSIRUNMODE_SCHEDULED)) {
    SendRecord(INSTALLMESSAGE_ACTIONDATA, {text.c_str()});
  }
}

}  // namespace zqv
