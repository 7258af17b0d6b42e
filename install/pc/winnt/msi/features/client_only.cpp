#include "features/client_only.h"

#include <string>

#include "base/text.h"
#include "base/yes_no.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "services/system/product_key.h"
#include "services/system/registry.h"

namespace zqv {

namespace {

bool InstalledProductIsClient() {
  std::string type;
  return ReadRegistryText(HKEY_LOCAL_MACHINE, kCurrentVersionKey, "ProductType", type) && EqualNoCase(type, "client");
}

bool Decide(bool &clientOnly) {
  std::string value;
  if (!GetTrimmedProperty("ZQVCLIENT", value)) {
    return false;
  }
  if (!value.empty()) {
    clientOnly = IsYes(value);
    return true;
  }
  if (!GetTrimmedProperty("ZQVPRODUCT", value, kCounterLength)) {
    return false;
  }
  clientOnly = EqualNoCase(value, "client");
  if (clientOnly) {
    return true;
  }
  if (!GetTrimmedProperty("VersionNT", value)) {
    return false;
  }
  clientOnly = value.empty();
  if (clientOnly) {
    return true;
  }
  if (!GetTrimmedProperty("Installed", value)) {
    return false;
  }
  clientOnly = !value.empty() && InstalledProductIsClient();
  return true;
}

}  // namespace

bool IsClientOnly(bool &clientOnly) {
  if (!Decide(clientOnly)) {
    return false;
  }
  Log("Client-only installation: %s", clientOnly ? "yes" : "no");
  return true;
}

}  // namespace zqv
