#include "runtime/deferred_data.h"

#include <algorithm>
#include <new>
#include <string>
#include <string_view>

#include "platform/c_file.h"
#include "platform/owner.h"
#include "runtime/installer_result.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "runtime/response_property.h"
#include "runtime/session.h"
#include "runtime/temp_name.h"
#include "runtime/text.h"

namespace {

constexpr const char *kNameLists[] = {"ZQVPROPERTYNAMELIST1", "ZQVPROPERTYNAMELIST2", "ZQVPROPERTYNAMELIST3"};

/// The properties that a silent installation may take from its response file.
constexpr std::string_view kResponseNames[] = {"PGMFOLDER",    "DATFOLDER",      "LOGFOLDER",      "KEEPQMDATA",
                                               "KEEPWEBDATA",  "REMOVEFEATURES", "AGREETOLICENSE", "WIZPARMFILE",
                                               "USERCHOICE",   "LAUNCHWIZ",      "TRIALTOPROD",    "SERVERFOLDER",
                                               "STARTSERVICE", "STARTTASKBAR",   "HIGHCONTRAST"};

constexpr char kActionQuery[] = "SELECT * FROM CustomAction";
constexpr unsigned kInLibrary = 0x1;   // msidbCustomActionTypeDll
constexpr unsigned kInScript = 0x400;  // msidbCustomActionTypeInScript

/// The names of the three lists, each followed by ";".
UINT ReadNames(std::string &names) {
  for (const char *list : kNameLists) {
    std::string value;
    if (GetProperty(list, value, kNameListLength) != ERROR_SUCCESS) {
      return ERROR_INSTALL_FAILURE;
    }
    if (value.empty()) {
      Log("Can't get property name list '%s'", list);
    }
    names.append(value).append(";");
  }
  return ERROR_SUCCESS;
}

UINT ReadTransferred(const std::string &name, std::string &value) {
  const bool response =
      std::find(std::begin(kResponseNames), std::end(kResponseNames), name) != std::end(kResponseNames);
  return response ? GetPropertyWithResponse(name.c_str(), value) : GetProperty(name.c_str(), value);
}

/// Appends "NAME=value;" for each of the names.
UINT ReadValues(std::string_view names, std::string &entries) {
  while (!names.empty()) {
    const std::string name(names.substr(0, names.find(';')));
    names.remove_prefix(std::min(names.size(), name.size() + 1));
    if (name.empty()) {
      continue;
    }
    std::string value;
    if (ReadTransferred(name, value) != ERROR_SUCCESS) {
      return ERROR_INSTALL_FAILURE;
    }
    const std::size_t size = entries.size() + name.size() + value.size() + 2;
    try {
      entries.append(name).append("=").append(value).append(";");
    } catch (const std::bad_alloc &) {
      Log("Can't allocate property value list (%d)", static_cast<int>(size));
      return ERROR_INSTALL_FAILURE;
    }
  }
  return ERROR_SUCCESS;
}

UINT WriteEntries(const std::string &path, const std::string &entries) {
  OwnedStream file(OpenCFile(path.c_str(), "wt"));
  if (!file) {
    Log("***Can't open '%s'", path.c_str());
    return ERROR_SUCCESS;
  }
  const bool written = std::fputs(entries.c_str(), file.Get()) >= 0;
  if (file.Close() != 0 || !written) {
    Log("***Error writing '%s'", path.c_str());
    return ERROR_INSTALL_FAILURE;
  }
  return ERROR_SUCCESS;
}

/// The first failing call's code is the action's result.
class FirstFailure {
 public:
  /// True when the call succeeded.
  bool Check(const char *call, const char *argument, UINT answer) {
    UINT ignored = ERROR_SUCCESS;
    iwiCheckMsiResult(call, argument, answer, ignored);
    return Keep(answer);
  }
  bool Keep(UINT answer) {
    if (result_ == ERROR_SUCCESS) {
      result_ = answer;
    }
    return answer == ERROR_SUCCESS;
  }
  UINT Result() const { return result_; }

 private:
  UINT result_ = ERROR_SUCCESS;
};

void CloseChecked(OwnedInstallerHandle &handle, FirstFailure &failure) {
  if (handle) {
    failure.Check("MsiCloseHandle", "", handle.Close());
  }
}

/// One row of the CustomAction table; false when its property could not be set, which ends the action.
bool SetDataOfRow(MSIHANDLE row, const std::string &listPath, FirstFailure &failure) {
  char name[kLongLength];
  DWORD length = kLongLength;
  if (!failure.Check("MsiRecordGetString", "1", MsiRecordGetStringA(row, 1, name, &length))) {
    return true;
  }
  const unsigned type = static_cast<unsigned>(MsiRecordGetInteger(row, 2));
  const UINT typeResult = type == static_cast<unsigned>(MSI_NULL_INTEGER) ? ERROR_INVALID_PARAMETER : ERROR_SUCCESS;
  if (!failure.Check("MsiRecordGetInteger", "2", typeResult)) {
    return true;
  }
  Log("CA Name:'%s' type 0x%8.8lx", name, static_cast<unsigned long>(type));
  if ((type & kInLibrary) == 0 || (type & kInScript) == 0) {
    return true;
  }
  return failure.Keep(SetProperty(name, listPath));
}

void SetDataOfRows(MSIHANDLE view, const std::string &listPath, FirstFailure &failure) {
  for (bool goOn = true; goOn;) {
    OwnedInstallerHandle row;
    const UINT fetched = MsiViewFetch(view, row.Out());
    if (fetched == ERROR_NO_MORE_ITEMS || !failure.Check("MsiViewFetch", kActionQuery, fetched)) {
      return;
    }
    goOn = SetDataOfRow(row.Get(), listPath, failure);
    CloseChecked(row, failure);
  }
}

}  // namespace

UINT WriteDeferredProperties() {
  if (GetKeptProperty(Kept::tempFolder) != ERROR_SUCCESS) {
    return ERROR_INSTALL_FAILURE;
  }
  const std::string path = ValueListName();
  std::string names;
  std::string entries;
  if (ReadNames(names) != ERROR_SUCCESS || ReadValues(names, entries) != ERROR_SUCCESS) {
    return ERROR_INSTALL_FAILURE;
  }
  return WriteEntries(path, entries);
}

UINT SetCustomActionData() {
  if (GetKeptProperty(Kept::tempFolder) != ERROR_SUCCESS) {
    return ERROR_INSTALL_FAILURE;
  }
  const std::string listPath = ValueListName();
  OwnedInstallerHandle database(MsiGetActiveDatabase(Session().handle));
  if (!database) {
    LogLine("***MsiGetActiveDatabase() failed");
    return ERROR_INSTALL_FAILURE;
  }
  FirstFailure failure;
  OwnedInstallerHandle view;
  if (failure.Check("MsiDatabaseOpenView", kActionQuery,
                    MsiDatabaseOpenViewA(database.Get(), kActionQuery, view.Out()))) {
    if (failure.Check("MsiViewExecute", kActionQuery, MsiViewExecute(view.Get(), 0))) {
      SetDataOfRows(view.Get(), listPath, failure);
    }
    failure.Check("MsiViewClose", "", MsiViewClose(view.Get()));
    CloseChecked(view, failure);
  }
  CloseChecked(database, failure);
  return failure.Result();
}
