#include "previous/losing_features.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "base/yes_no.h"
#include "features/answers/response_property.h"
#include "platform/msi.h"
#include "previous/old_component.h"
#include "previous/replacement.h"
#include "runtime/log.h"
#include "runtime/message.h"
#include "runtime/property.h"
#include "runtime/user_interface.h"
#include "services/tables/feature_state.h"

namespace zqv {

namespace {

constexpr char kFallback[] =
    "Installing would remove these features of the earlier version: %1. To allow this, set REMOVEFEATURES to yes.";

/// The features, each once, in the order of the components.
std::string ListLosing() {
  std::vector<std::string_view> seen;
  std::string losing;
  for (const OldComponentRow &row : OldComponents()) {
    if (row.feature == nullptr || !HasOldComponent(row.record) ||
        std::find(seen.begin(), seen.end(), row.feature) != seen.end()) {
      continue;
    }
    seen.emplace_back(row.feature);
    if (!StaysLocal(row.feature)) {
      losing.append(losing.empty() ? "" : ",").append(row.feature);
    }
  }
  return losing;
}

/// Finds out whether features may be lost: all of the product goes, or the user agrees, or dialogs have it in hand.
bool AskWhetherAllowed(bool &allowed) {
  std::string removal;
  std::string agreed;
  bool full = false;
  if (!GetProperty("ZQVREMOVE", removal) || !GetPropertyWithResponse("REMOVEFEATURES", agreed) ||
      !AskFullUserInterface(full)) {
    return false;
  }
  allowed = removal == "1" || IsYes(agreed) || full;
  return true;
}

}  // namespace

ResultCode TestLosingFeatures() {
  const std::string losing = ListLosing();
  if (!SetProperty("ZQVLOSINGFEATURES", losing)) {
    return ERROR_INSTALL_FAILURE;
  }
  bool allowed = losing.empty();
  if (!allowed && !AskWhetherAllowed(allowed)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (allowed) {
    return ERROR_SUCCESS;
  }
  iiiDisplayMsgBox(FillInsert(NlsText(message::kLosingFeatures, kFallback), "%1", losing), MB_ICONERROR);
  Log("***Features would be lost: '%s'", losing.c_str());
  return ERROR_INSTALL_FAILURE;
}

}  // namespace zqv
