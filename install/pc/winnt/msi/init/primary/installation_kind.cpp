#include "init/primary/sections.h"
#include "platform/msi.h"
#include "runtime/property.h"
#include "runtime/session.h"

namespace zqv {

bool SettleInstallationKind(Facts &facts) {
  facts.administrative = InRunMode(MSIRUNMODE_ADMIN);
  return SetProperty("ALLUSERS", "1");
}

}  // namespace zqv
