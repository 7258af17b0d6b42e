#include <string>

#include "features/answers/response_property.h"
#include "init/primary/sections.h"
#include "platform/owner.h"
#include "runtime/log.h"
#include "runtime/message.h"
#include "services/system/product_key.h"

namespace zqv {

namespace {

struct SupportPac {
  const char *checkSwitch;  ///< the property that asks for the check
  const char *key;          ///< below the key of the applied SupportPacs
  const char *title;        ///< as the log shows it
  UINT message;
};
constexpr SupportPac kSupportPacs[] = {
    {"ZQVCHECKMSCS", "\\MC74", "MC74 (MSCS support)", message::kClusterSupportPac},
    {"ZQVCHECKPUBSUB", "\\MA0C", "MA0C (Pub/Sub)", message::kPubSubSupportPac},
};

bool IsApplied(const SupportPac &pac) {
  const std::string path = std::string(kCurrentVersionKey) + "\\SupportPacs Applied" + pac.key;
  OwnedKey key;
  const LONG error = RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_QUERY_VALUE, key.Out());
  if (error != ERROR_SUCCESS && error != ERROR_FILE_NOT_FOUND) {
    Log("***Can't open key '%s' %d", path.c_str(), static_cast<int>(error));
  }
  return error == ERROR_SUCCESS;
}

}  // namespace

bool CheckSupportPacs(Facts & /*facts*/) {
  for (const SupportPac &pac : kSupportPacs) {
    std::string asked;
    if (!GetPropertyWithResponse(pac.checkSwitch, asked)) {
      return false;
    }
    if (asked.empty()) {
      continue;
    }
    if (IsApplied(pac)) {
      Log("ServicePac %s is installed", pac.title);
      std::string text;
      if (iwiLoadNlsString(text, pac.message)) {
        iiiDisplayMsgBox(text, MB_ICONERROR);
      }
      return false;
    }
    Log("ServicePac %s is not installed", pac.title);
  }
  return true;
}

}  // namespace zqv
