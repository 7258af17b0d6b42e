#include "runtime/property.h"

#include <algorithm>

#include "base/path.h"
#include "base/result_code.h"
#include "platform/msi.h"
#include "runtime/log.h"
#include "runtime/session.h"

namespace zqv {

bool GetProperty(const char *name, std::string &value, DWORD length) { return ReadProperty(name, value, length, Log); }

bool GetTrimmedProperty(const char *name, std::string &value, DWORD length) {
  const bool read = GetProperty(name, value, length);
  iwiTidyPath(kWithoutBackslash, value);
  return read;
}

bool CadGetProperty(const char *name, std::string &value, DWORD length) {
  return ReadDeferredProperty(name, value, length, Log);
}

bool SetProperty(const char *name, const std::string &value) {
  if (InDeferredMode()) {
    Log("SETPROPERTY('%s', '%s') ignored during deferred execution", name, value.c_str());
    return true;
  }
  const ResultCode code = MsiSetPropertyA(Session().handle, name, value.c_str());
  if (code != ERROR_SUCCESS) {
    Log("***msiSetProperty('%s') value('%s') failed (%d)", name, value.c_str(), code);
    return false;
  }
  Log("Property '%s' value set to '%s'", name, value.c_str());
  return true;
}

bool SetSwitch(const char *name, bool value) { return SetProperty(name, value ? "1" : ""); }

bool SetProperties(std::initializer_list<PropertyValue> properties) {
  return std::all_of(properties.begin(), properties.end(),
                     [](const PropertyValue &property) { return SetProperty(property.name, property.value); });
}

bool GetKeptProperty(Kept property) { return FillKept(property, Log); }

}  // namespace zqv
