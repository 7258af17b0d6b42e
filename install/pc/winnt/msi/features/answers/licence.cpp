#include "features/answers/licence.h"

#include "base/text.h"
#include "base/yes_no.h"
#include "features/answers/response_property.h"
#include "runtime/log.h"
#include "runtime/property.h"

namespace zqv {

namespace {

constexpr char kAgreement[] = "AGREETOLICENSE";

}  // namespace

bool AskLicenceType(std::string &type) {
  std::string asGiven;
  if (!GetTrimmedProperty("ZQVLICENSETYPE", asGiven)) {
    return false;
  }
  type = asGiven.empty() ? "production" : LowerCase(asGiven);
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
  return true;
}

bool TakeAgreement(std::string &answer, bool &agreed) {
  if (!GetPropertyWithResponse(kAgreement, answer)) {
    return false;
  }
  agreed = IsYes(answer);
  return !agreed || SetProperty("AgreeToLicense", "Yes");
}

void TellUnacceptable(const std::string &answer) { Log("***%s value '%s' not acceptable", kAgreement, answer.c_str()); }

}  // namespace zqv
