#include "init/primary/feature_options.h"

#include <string>

#include "base/text.h"
#include "init/primary/feature_lists.h"
#include "init/primary/sections.h"
#include "runtime/property.h"

namespace zqv {

namespace {

constexpr int kNewestWithoutAmus = 400;  // VersionNT of Windows NT 4

/// REMOVE, read once per load.
constinit LoadState<std::string> removal;

}  // namespace

constinit LoadStateEntry &featureOptionState = removal;

bool PublishRemoval(Facts & /*facts*/) {
  if (removal->empty() && !GetProperty("REMOVE", *removal, kNameListLength)) {
    return false;
  }
  return SetProperty("ZQVREMOVE", EqualNoCase(*removal, "all") ? "1" : "0");
}

bool DefaultReinstallMode(Facts &facts) {
  if (facts.administrative) {
    return true;
  }
  std::string mode;
  if (!GetProperty("REINSTALLMODE", mode)) {
    return false;
  }
  if (!mode.empty()) {
    return true;
  }
  std::string version;
  if (!GetProperty("VersionNT", version)) {
    return false;
  }
  return SetProperty("REINSTALLMODE", DecimalValue(version) > kNewestWithoutAmus ? "amus" : "omus");
}

bool CheckFeatureLists(Facts & /*facts*/) { return ValidateFeatureLists(); }

}  // namespace zqv
