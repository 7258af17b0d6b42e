#include "runtime/property_source.h"

#include <array>
#include <vector>

#include "base/path.h"
#include "base/result_code.h"
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

bool Fail(const char *name, ResultCode code, Note note) {
  note("***msiGetProperty('%s') failed (%d)", name, code);
  return false;
}

bool ReadTable(const char *name, std::string &value, DWORD length, Note note) {
  value.clear();
  std::vector<char> buffer(length);
  DWORD got = length;
  const ResultCode code = MsiGetPropertyA(Session().handle, name, buffer.data(), &got);
  if (code != ERROR_SUCCESS) {
    return Fail(name, code, note);
  }
  if (got == 0) {
    note("Property '%s' not defined in property table", name);
    return true;
  }
  note("Property '%s' value '%s' from property table", name, buffer.data());
  value = buffer.data();
  return true;
}

}  // namespace

constinit LoadStateEntry &propertySourceState = state;

bool ReadProperty(const char *name, std::string &value, DWORD length, Note note) {
  return InDeferredMode() ? ReadDeferredProperty(name, value, length, note) : ReadTable(name, value, length, note);
}

bool ReadDeferredProperty(const char *name, std::string &value, DWORD length, Note note) {
  value.clear();
  ValueList &list = state->valueList;
  if (!list.IsLoaded()) {
    std::string path;
    if (!ReadTable("CustomActionData", path, kCustomActionDataLength, note)) {
      return false;
    }
    if (!path.empty() && !list.Load(path.c_str(), note)) {
      return false;
    }
  }
  const std::string_view found = list.Find(name);
  if (found.data() == nullptr) {
    note("Property '%s' not defined in CustomActionData", name);
    return true;
  }
  if (found.size() >= length) {
    return Fail(name, ERROR_MORE_DATA, note);
  }
  value = found;
  note("Property '%s' value '%s'; from CustomActionData", name, value.c_str());
  return true;
}

const char *NameOf(Kept property) { return kKeptNames[static_cast<std::size_t>(property)]; }

std::string &ValueOf(Kept property) { return state->kept[static_cast<std::size_t>(property)]; }

void ForgetKeptFolders() {
  ValueOf(Kept::programFolder).clear();
  ValueOf(Kept::dataFolder).clear();
}

bool FillKept(Kept property, Note note) {
  if (!ValueOf(property).empty()) {
    return true;
  }
  std::string value;
  const bool read = ReadProperty(NameOf(property), value, kPropertyLength, note);
  ValueOf(property) = Trimmed(value);
  return read;
}

}  // namespace zqv
