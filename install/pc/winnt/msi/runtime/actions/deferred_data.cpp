#include "runtime/actions/deferred_data.h"

#include <algorithm>
#include <new>
#include <string>
#include <string_view>

#include "base/text.h"
#include "features/answers/response_property.h"
#include "platform/c_file.h"
#include "platform/owner.h"
#include "runtime/installer_result.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "runtime/script.h"
#include "runtime/table_query.h"
#include "runtime/temp_name.h"

namespace zqv {

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
bool ReadNames(std::string &names) {
  for (const char *list : kNameLists) {
    std::string value;
    if (!GetProperty(list, value, kNameListLength)) {
      return false;
    }
    if (value.empty()) {
      Log("Can't get property name list '%s'", list);
    }
    names.append(value).append(";");
  }
  return true;
}

bool ReadTransferred(const std::string &name, std::string &value) {
  const bool response =
      std::find(std::begin(kResponseNames), std::end(kResponseNames), name) != std::end(kResponseNames);
  return response ? GetPropertyWithResponse(name.c_str(), value) : GetProperty(name.c_str(), value);
}

/// Appends "NAME=value;" for each of the names.
bool ReadValues(std::string_view names, std::string &entries) {
  while (!names.empty()) {
    const std::string name(names.substr(0, names.find(';')));
    names.remove_prefix(std::min(names.size(), name.size() + 1));
    if (name.empty()) {
      continue;
    }
    std::string value;
    if (!ReadTransferred(name, value)) {
      return false;
    }
    const std::size_t size = entries.size() + name.size() + value.size() + 2;
    try {
      entries.append(name).append("=").append(value).append(";");
    } catch (const std::bad_alloc &) {
      Log("Can't allocate property value list (%d)", static_cast<int>(size));
      return false;
    }
  }
  return true;
}

bool WriteEntries(const std::string &path, const std::string &entries) {
  OwnedStream file(OpenCFile(path.c_str(), "wt"));
  if (!file) {
    Log("***Can't open '%s'", path.c_str());
    return true;
  }
  const bool written = std::fputs(entries.c_str(), file.Get()) >= 0;
  if (file.Close() != 0 || !written) {
    Log("***Error writing '%s'", path.c_str());
    return false;
  }
  return true;
}

/// One row of the CustomAction table; false when its property could not be set, which ends the action.
bool SetDataOfRow(MSIHANDLE row, const std::string &listPath, ResultCode &result) {
  std::string name;
  if (CheckFirstFailure("MsiRecordGetString", "1", ReadRecordText(row, 1, name), result) != ERROR_SUCCESS) {
    return true;
  }
  const auto type = static_cast<unsigned>(MsiRecordGetInteger(row, 2));
  const ResultCode typeResult =
      type == static_cast<unsigned>(MSI_NULL_INTEGER) ? ERROR_INVALID_PARAMETER : ERROR_SUCCESS;
  if (CheckFirstFailure("MsiRecordGetInteger", "2", typeResult, result) != ERROR_SUCCESS) {
    return true;
  }
  Log("CA Name:'%s' type 0x%8.8lx", name.c_str(), static_cast<unsigned long>(type));
  if ((type & kInLibrary) == 0 || (type & kInScript) == 0) {
    return true;
  }
  const bool set = SetProperty(name.c_str(), listPath);
  result = set ? result : ERROR_INSTALL_FAILURE;
  return set;
}

/// Both actions name the same file; where there is no name to be had, both go on with the empty text.
bool NameValueList(std::string &path) {
  if (!GetKeptProperty(Kept::tempFolder)) {
    return false;
  }
  path = ValueListName();
  return true;
}

}  // namespace

ResultCode WriteDeferredProperties() {
  std::string path;
  if (!NameValueList(path)) {
    return ERROR_INSTALL_FAILURE;
  }
  std::string names;
  std::string entries;
  if (!ReadNames(names) || !ReadValues(names, entries)) {
    return ERROR_INSTALL_FAILURE;
  }
  return ResultOf(WriteEntries(path, entries));
}

ResultCode SetCustomActionData() {
  std::string listPath;
  if (!NameValueList(listPath)) {
    return ERROR_INSTALL_FAILURE;
  }
  ResultCode result = ERROR_SUCCESS;
  VisitRows(kActionQuery, result, [&](MSIHANDLE row) { return SetDataOfRow(row, listPath, result); });
  return result != ERROR_SUCCESS ? result : ResultOf(SetProperty(kScript, kScriptPlanned));
}

}  // namespace zqv
