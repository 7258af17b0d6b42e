#include "previous/replacement.h"

#include "platform/msi.h"
#include "previous/base_component.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "services/system/product_key.h"
#include "services/system/registry.h"
#include "services/tables/feature_state.h"
#include "services/tables/remove_registry.h"

namespace zqv {

bool IsReplacedBy(const char *feature) { return AskFeatureState(feature).action == INSTALLSTATE_LOCAL; }

bool PublishDecision(bool isReplaced, const char *told, const char *decision) {
  Log("%s", isReplaced ? "New feature replaces old" : told);
  return SetSwitch(decision, !isReplaced);
}

bool HasOldComponent(const std::string &name) {
  return iwiRegReadValue(HKEY_LOCAL_MACHINE, kComponentsKey, name, nullptr, nullptr, nullptr);
}

void StackOldComponent(const std::string &name) {
  static_cast<void>(StackDeleteRegistryValue(kComponentsKey, name, kBaseComponent));
}

}  // namespace zqv
