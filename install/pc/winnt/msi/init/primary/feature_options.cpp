#include <string>

#include "base/text.h"
#include "init/primary/feature_lists.h"
#include "init/primary/sections.h"
#include "init/removal.h"
#include "runtime/property.h"

namespace zqv {

namespace {

constexpr int kNewestWithoutAmus = 400;  // VersionNT of Windows NT 4

}  // namespace

bool PublishRemoval(Facts & /*facts*/) { return PublishWholeRemoval(); }

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
