#include "completion/service_message.h"

#include <string>

#include "base/version.h"
#include "runtime/log.h"
#include "runtime/message.h"
#include "runtime/property.h"
#include "services/system/product_key.h"
#include "services/system/registry.h"

namespace zqv {

ResultCode DisplayApplyService() {
  std::string package;
  std::string text;
  if (!GetProperty("ZQVVRMF", package) || !GetProperty("ZQVSERVICELEVELMESSAGE", text, kLongLength)) {
    return ERROR_INSTALL_FAILURE;
  }
  std::string installed;
  if (!ReadRegistryText(HKEY_LOCAL_MACHINE, kCurrentVersionKey, kVrmfValue, installed) || installed.empty()) {
    LogLine("No installed level in the registry");
  } else if (iwiCompareVersions(installed, package) <= 0) {
    Log("Installed level '%s' is not above '%s'", installed.c_str(), package.c_str());
  } else if (text.empty()) {
    Log("Installed level '%s' is above '%s', but there is no text to show", installed.c_str(), package.c_str());
  } else {
    iiiDisplayMsgBox(text, MB_ICONINFORMATION);
  }
  return ERROR_SUCCESS;
}

}  // namespace zqv
