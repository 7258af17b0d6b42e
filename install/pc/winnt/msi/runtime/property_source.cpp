#include "runtime/property_source.h"

#include <array>
#include <vector>

#include "base/path.h"
#include "platform/msi.h"
#include "runtime/session.h"
#include "runtime/value_list.h"

namespace zqv {

namespace {

constexpr DWORD kCustomActionDataLength = 324;

constexpr std::array kKeptNames = {"ZQVUSERTRACEPATH", "ZQVUSERLOGPATH", "ZQVTEMPLOGPATH", "ZQVDATFOLDER",
                                   "ZQVTEMP",          "ZQVPGMFOLDER",   "ZQVPREVPGM"};

struct State {
  ValueList valueList;
  std::array<std::string, kKeptNames.size()> kept;
};
constinit LoadState<State> state;

UINT Fail(const char *name, UINT code, Note note) {
  note("***msiGetProperty('%s') failed (%d)", name, code);
  return ERROR_INSTALL_FAILURE;
}

UINT ReadTable(const char *name, std::string &value, DWORD length, Note note) {
  value.clear();
  std::vector<char> buffer(length);
  DWORD got = length;
  const UINT code = MsiGetPropertyA(Session().handle, name, buffer.data(), &got);
  if (code != ERROR_SUCCESS) {
    return Fail(name, code, note);
  }
  if (got == 0) {
    note("Property '%s' not defined in property table", name);
    return ERROR_SUCCESS;
  }
  note("Property '%s' value '%s' from property table", name, buffer.data());
  value = buffer.data();
  return ERROR_SUCCESS;
}

}  // namespace

constinit LoadStateEntry &propertySourceState = state;

UINT ReadProperty(const char *name, std::string &value, DWORD length, Note note) {
  return InDeferredMode() ? ReadDeferredProperty(name, value, length, note) : ReadTable(name, value, length, note);
}

UINT ReadDeferredProperty(const char *name, std::string &value, DWORD length, Note note) {
  value.clear();
  ValueList &list = state->valueList;
  if (!list.IsLoaded()) {
    std::string path;
    if (ReadTable("CustomActionData", path, kCustomActionDataLength, note) != ERROR_SUCCESS) {
      return ERROR_INSTALL_FAILURE;
    }
    if (!path.empty() && list.Load(path.c_str(), note) != ERROR_SUCCESS) {
      return ERROR_INSTALL_FAILURE;
    }
  }
  const std::string_view found = list.Find(name);
  if (found.data() == nullptr) {
    note("Property '%s' not defined in CustomActionData", name);
    return ERROR_SUCCESS;
  }
  if (found.size() >= length) {
    return Fail(name, ERROR_MORE_DATA, note);
  }
  value = found;
  note("Property '%s' value '%s'; from CustomActionData", name, value.c_str());
  return ERROR_SUCCESS;
}

const char *NameOf(Kept property) { return kKeptNames[static_cast<std::size_t>(property)]; }

std::string &ValueOf(Kept property) { return state->kept[static_cast<std::size_t>(property)]; }

UINT FillKept(Kept property, Note note) {
  if (!ValueOf(property).empty()) {
    return ERROR_SUCCESS;
  }
  std::string value;
  const UINT result = ReadProperty(NameOf(property), value, kPropertyLength, note);
  ValueOf(property) = Trimmed(value);
  return result;
}

}  // namespace zqv
