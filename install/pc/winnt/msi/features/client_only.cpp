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
  return ReadRegistryText(HKEY_LOCAL_MACHINE, kCurrentVersionKey, "ProductType", type) != 0 &&
         EqualNoCase(type, "client");
}

UINT Decide(bool &clientOnly) {
  std::string value;
  if (GetTrimmedProperty("ZQVCLIENT", value) != ERROR_SUCCESS) {
    return ERROR_INSTALL_FAILURE;
  }
  if (!value.empty()) {
    clientOnly = IsYes(value);
    return ERROR_SUCCESS;
  }
  if (GetTrimmedProperty("ZQVPRODUCT", value, kCounterLength) != ERROR_SUCCESS) {
    return ERROR_INSTALL_FAILURE;
  }
  clientOnly = EqualNoCase(value, "client");
  if (clientOnly) {
    return ERROR_SUCCESS;
  }
  if (GetTrimmedProperty("VersionNT", value) != ERROR_SUCCESS) {
    return ERROR_INSTALL_FAILURE;
  }
  clientOnly = value.empty();
  if (clientOnly) {
    return ERROR_SUCCESS;
  }
  if (GetTrimmedProperty("Installed", value) != ERROR_SUCCESS) {
    return ERROR_INSTALL_FAILURE;
  }
  clientOnly = !value.empty() && InstalledProductIsClient();
  return ERROR_SUCCESS;
}

}  // namespace

UINT IsClientOnly(bool &clientOnly) {
  if (Decide(clientOnly) != ERROR_SUCCESS) {
    return ERROR_INSTALL_FAILURE;
  }
  Log("Client-only installation: %s", clientOnly ? "yes" : "no");
  return ERROR_SUCCESS;
}

}  // namespace zqv
