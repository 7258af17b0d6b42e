#include "runtime/property.h"

#include "base/path.h"
#include "platform/msi.h"
#include "runtime/log.h"
#include "runtime/session.h"

namespace zqv {

UINT GetProperty(const char *name, std::string &value, DWORD length) { return ReadProperty(name, value, length, Log); }

UINT GetTrimmedProperty(const char *name, std::string &value, DWORD length) {
  const UINT result = GetProperty(name, value, length);
  iwiTidyPath(kWithoutBackslash, value);
  return result;
}

UINT CadGetProperty(const char *name, std::string &value, DWORD length) {
  return ReadDeferredProperty(name, value, length, Log);
}

UINT SetProperty(const char *name, const std::string &value) {
  if (InDeferredMode()) {
    Log("SETPROPERTY('%s', '%s') ignored during deferred execution", name, value.c_str());
    return ERROR_SUCCESS;
  }
  const UINT code = MsiSetPropertyA(Session().handle, name, value.c_str());
  if (code != ERROR_SUCCESS) {
    Log("***msiSetProperty('%s') value('%s') failed (%d)", name, value.c_str(), code);
    return ERROR_INSTALL_FAILURE;
  }
  Log("Property '%s' value set to '%s'", name, value.c_str());
  return ERROR_SUCCESS;
}

UINT SetSwitch(const char *name, bool value) { return SetProperty(name, value ? "1" : ""); }

UINT SetProperties(std::initializer_list<PropertyValue> properties) {
  for (const PropertyValue &property : properties) {
    if (SetProperty(property.name, property.value) != ERROR_SUCCESS) {
      return ERROR_INSTALL_FAILURE;
    }
  }
  return ERROR_SUCCESS;
}

UINT GetKeptProperty(Kept property) { return FillKept(property, Log); }

}  // namespace zqv
