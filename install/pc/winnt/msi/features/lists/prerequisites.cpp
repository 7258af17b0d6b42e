#include "features/lists/prerequisites.h"

#include <string>

#include "base/text.h"
#include "features/feature_table.h"
#include "features/lists/list_box.h"
#include "runtime/message.h"
#include "runtime/property.h"
#include "services/system/pending_renames.h"
#include "services/tables/feature_state.h"

namespace zqv {

namespace {

constexpr int kOldestSystem = 500;  // VersionNT of Windows 2000

/// Of the product. A test is given the property's value.
struct Need {
  const char *property;
  bool (*isMet)(const std::string &value);
  UINT message;
  const char *fallback;
};
constexpr Need kNeeds[] = {
    {"VersionNT", [](const std::string &version) { return DecimalValue(version) >= kOldestSystem; },
     message::kNeedsSystem, "Vantrel QV needs Windows 2000 or later."},
    {"Privileged", [](const std::string &privileged) { return !privileged.empty(); }, message::kNeedsAdministrator,
     "Only an administrator can install Vantrel QV."},
    {"ZQVQVISRUNNING", [](const std::string &running) { return running.empty(); }, message::kNeedsStop,
     "Vantrel QV is running. Stop it before you install."},
    {"ZQVPGMFOLDER", [](const std::string &folder) { return !IsRestartOwed(folder); }, message::kNeedsRestart,
     "Windows has yet to replace or remove files of Vantrel QV. Restart it before you install."},
};

struct FeatureNeed {
  Feature feature;
  Feature needed;
};
constexpr FeatureNeed kFeatureNeeds[] = {
    {Feature::Server, Feature::Base},       {Feature::Explorer, Feature::Base}, {Feature::Client, Feature::Base},
    {Feature::JavaMsg, Feature::Base},      {Feature::Toolkit, Feature::Base},  {Feature::FTA_Server, Feature::Server},
    {Feature::FTA_Client, Feature::Client},
};

ResultCode Answer(const char *property, const ListBox &list) {
  return ResultOf(SetProperty(property, list.IsEmpty() ? "0" : "1"));
}

}  // namespace

ResultCode ListProductPrerequisites() {
  ListBox list(kProductList);
  for (const Need &need : kNeeds) {
    std::string value;
    if (!GetProperty(need.property, value)) {
      return ERROR_INSTALL_FAILURE;
    }
    if (!need.isMet(value)) {
      list.Add(NlsText(need.message, need.fallback));
    }
  }
  return Answer(kProductAnswer, list);
}

ResultCode ListFeaturePrerequisites() {
  ListBox list(kFeatureList);
  for (const FeatureNeed &need : kFeatureNeeds) {
    const char *feature = NameOf(need.feature);
    const char *needed = NameOf(need.needed);
    if (AskFeatureState(feature).action == INSTALLSTATE_LOCAL && !StaysLocal(needed)) {
      std::string text;
      FormatInserts(text, NlsText(message::kFeatureNeed, "The feature %1 needs the feature %2."), feature, needed);
      list.Add(text);
    }
  }
  return Answer(kFeatureAnswer, list);
}

}  // namespace zqv
