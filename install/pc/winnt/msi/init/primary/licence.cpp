#include <string>

#include "base/text.h"
#include "base/yes_no.h"
#include "features/answers/response_property.h"
#include "init/primary/sections.h"
#include "runtime/log.h"
#include "runtime/property.h"

namespace zqv {

namespace {

constexpr char kAgreement[] = "AGREETOLICENSE";

}  // namespace

bool DetermineLicenceType(Facts &facts) {
  std::string asGiven;
  if (!GetTrimmedProperty("ZQVLICENSETYPE", asGiven)) {
    return false;
  }
  std::string type = asGiven.empty() ? "production" : LowerCase(asGiven);
  if (type == "trial") {
    std::string toProduction;
    if (!GetTrimmedProperty("TRIALTOPROD", toProduction)) {
      return false;
    }
    if (IsYes(toProduction)) {
      type = "production";
    }
  }
  if (type != "production" && type != "trial" && type != "beta") {
    Log("***Unknown licence type '%s'", asGiven.c_str());
    return false;
  }
  facts.licenceType = type;
  return true;
}

bool CheckLicenceAcceptance(Facts & /*facts*/) {
  // For the log only: they tell how the question could be answered.
  std::string value;
  for (const char *name : {"Installed", "UILevel"}) {
    if (!GetProperty(name, value)) {
      return false;
    }
  }
  if (!GetPropertyWithResponse(kAgreement, value)) {
    return false;
  }
  if (IsYes(value)) {
    return SetProperty("AgreeToLicense", "Yes");
  }
  if (!value.empty() && !IsNo(value)) {
    Log("***%s value '%s' not acceptable", kAgreement, value.c_str());
  }
  return true;
}

bool PublishLicenceFolder(Facts & /*facts*/) { return SetProperty("ZQVLICENSEPATH", "licenses"); }

}  // namespace zqv
