#include "completion/registry_records.h"

#include <algorithm>
#include <optional>
#include <string>

#include "previous/base_component.h"
#include "runtime/log.h"
#include "runtime/phase.h"
#include "runtime/property.h"
#include "services/system/product_key.h"
#include "services/system/registry.h"
#include "services/tables/registry_row.h"

namespace zqv {

namespace {

constexpr char kVrmfProperty[] = "ZQVVRMF";
constexpr char kHandedVrmf[] = "ZQVOLDVRMF";
constexpr char kUnknown[] = "?";  ///< in the place of an earlier level that could not be put back
constexpr char kRemoval[] = "ZQVREMOVE";

struct Record {
  const char *name;
  const char *property;
};
constexpr Record kRecords[] = {{kProgramFolderValue, "ZQVPGMFOLDER"},
                               {kDataFolderValue, "ZQVDATFOLDER"},
                               {kLogFolderValue, "ZQVLOGFOLDER"},
                               {kVrmfValue, kVrmfProperty}};

bool StackRecord(const char *name, const std::string &value) {
  return StackRegistryValue(kCurrentVersionKey, name, value, kBaseComponent) == ERROR_SUCCESS;
}

bool SetVrmf(const std::string &vrmf) {
  return iwiRegSetValue(HKEY_LOCAL_MACHINE, kCurrentVersionKey, kVrmfValue, REG_SZ, vrmf.c_str(), -1);
}

/// The recorded level as it can be handed over: a text that a deferred action reads back as it is. Empty when there is
/// none; kUnknown, with a line, when it could not be put back.
std::string DescribeRecord() {
  std::optional<RegistryValueData> value;
  const bool read = ReadRegistryValue(HKEY_LOCAL_MACHINE, kCurrentVersionKey, kVrmfValue, value);
  if (read && !value) {
    return {};
  }
  std::string text;
  if (value && value->type == REG_SZ) {
    text.assign(value->bytes.begin(), std::find(value->bytes.begin(), value->bytes.end(), BYTE{0}));
  }
  if (text.empty() || text.size() >= kPropertyLength || text.find_first_of(";\r\n") != std::string::npos) {
    Log("***A rollback could not put back value '%s'", kVrmfValue);
    return kUnknown;
  }
  return text;
}

ResultCode Fix() {
  std::string vrmf;
  if (!GetProperty(kVrmfProperty, vrmf)) {
    return ERROR_INSTALL_FAILURE;
  }
  std::string recorded;
  static_cast<void>(ReadRegistryText(HKEY_LOCAL_MACHINE, kCurrentVersionKey, kVrmfValue, recorded));
  if (recorded == vrmf) {
    LogLine("Registry VRMF is up to date");
  } else if (SetVrmf(vrmf)) {
    Log("Registry VRMF set to '%s'", vrmf.c_str());
  }
  return ERROR_SUCCESS;
}

ResultCode PutBack() {
  std::string earlier;
  if (!GetProperty(kHandedVrmf, earlier)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (earlier.empty()) {
    static_cast<void>(iwiRegDeleteValue(HKEY_LOCAL_MACHINE, kCurrentVersionKey, kVrmfValue, true));
  } else if (earlier != kUnknown && SetVrmf(earlier)) {
    Log("Registry VRMF put back to '%s'", earlier.c_str());
  }
  return ERROR_SUCCESS;
}

}  // namespace

ResultCode StackRegistryUpdates() {
  bool good = true;
  for (const Record &record : kRecords) {
    std::string value;
    if (!GetProperty(record.property, value)) {
      return ERROR_INSTALL_FAILURE;
    }
    good = StackRecord(record.name, value) && good;
  }
  return ResultOf(good);
}

ResultCode StackSetHighContrast() {
  std::string choice;
  std::string removal;
  if (!GetProperty("ZQVSETHIGHCONTRAST", choice) || !GetProperty(kRemoval, removal)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (choice.empty() && removal != "1") {
    LogLine("No high contrast has been chosen");
    return ERROR_SUCCESS;
  }
  return ResultOf(StackRecord(kHighContrastValue, choice));
}

ResultCode RegistryFix() {
  const Phase phase = AnnouncePhase();
  std::string removal;
  if (!GetProperty(kRemoval, removal)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (removal == "1") {
    LogLine("All of the product goes; its level stays as it is");
    return ERROR_SUCCESS;
  }
  switch (phase) {
    case Phase::scriptGeneration:
      return ResultOf(SetProperty(kHandedVrmf, DescribeRecord()));
    case Phase::deferred:
      return Fix();
    case Phase::rollback:
      return PutBack();
    case Phase::commit:
      break;
  }
  return ERROR_SUCCESS;
}

}  // namespace zqv
