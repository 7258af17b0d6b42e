#include "init/primary/feature_options.h"

#include <string>

#include "base/text.h"
#include "init/primary/feature_lists.h"
#include "init/primary/sections.h"
#include "runtime/property.h"

namespace zqv {

namespace {

constexpr int kNewestWithoutAmus = 400;  // VersionNT of Windows NT 4

/// REMOVE, read once a load.
constinit LoadState<std::string> removal;

}  // namespace

constinit LoadStateEntry &featureOptionState = removal;

UINT PublishRemoval(Facts & /*facts*/) {
  if (removal->empty() && GetProperty("REMOVE", *removal, kNameListLength) != ERROR_SUCCESS) {
    return ERROR_INSTALL_FAILURE;
  }
  return SetProperty("ZQVREMOVE", EqualNoCase(*removal, "all") ? "1" : "0");
}

UINT DefaultReinstallMode(Facts &facts) {
  if (facts.administrative) {
    return ERROR_SUCCESS;
  }
  std::string mode;
  if (GetProperty("REINSTALLMODE", mode) != ERROR_SUCCESS) {
    return ERROR_INSTALL_FAILURE;
  }
  if (!mode.empty()) {
    return ERROR_SUCCESS;
  }
  std::string version;
  if (GetProperty("VersionNT", version) != ERROR_SUCCESS) {
    return ERROR_INSTALL_FAILURE;
  }
  return SetProperty("REINSTALLMODE", DecimalValue(version) > kNewestWithoutAmus ? "amus" : "omus");
}

UINT CheckFeatureLists(Facts & /*facts*/) { return ValidateFeatureLists(); }

}  // namespace zqv
