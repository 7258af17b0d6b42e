#include <string>

#include "base/yes_no.h"
#include "features/answers/licence.h"
#include "init/primary/sections.h"
#include "runtime/property.h"

namespace zqv {

bool DetermineLicenceType(Facts &facts) { return AskLicenceType(facts.licenceType); }

bool CheckLicenceAcceptance(Facts & /*facts*/) {
  // For the log only: they tell how the question could be answered.
  std::string value;
  for (const char *name : {"Installed", "UILevel"}) {
    if (!GetProperty(name, value)) {
      return false;
    }
  }
  bool agreed = false;
  if (!TakeAgreement(value, agreed)) {
    return false;
  }
  if (!agreed && !value.empty() && !IsNo(value)) {
    TellUnacceptable(value);
  }
  return true;
}

bool PublishLicenceFolder(Facts & /*facts*/) { return SetProperty("ZQVLICENSEPATH", "licenses"); }

}  // namespace zqv
