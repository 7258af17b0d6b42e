#include "previous/data/migrate_registry.h"

#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/text.h"
#include "previous/base_component.h"
#include "runtime/log.h"
#include "runtime/phase.h"
#include "runtime/property.h"
#include "services/system/product_key.h"
#include "services/system/registry.h"
#include "services/tables/registry_row.h"

namespace zqv {

namespace {

constexpr char kValueName[] = "MigratedFrom";
constexpr char kHandedValue[] = "ZQVMIGRATEDFROM";
constexpr std::string_view kNone = "none";

bool ReadVersion(std::string &version) {
  std::string migrate;
  if (!GetProperty("ZQVMIGRATE", migrate) || !GetTrimmedProperty("ZQVPREVVERSION", version)) {
    return false;
  }
  if (migrate != "1" || version.empty()) {
    LogLine("No earlier version to record");
    version.clear();
  }
  return true;
}

/// The value as it is now, as it is handed over: its type and its bytes, "1:36", or that there is none. Empty, with a
/// line, when it cannot be read, or a deferred action could not read that.
std::string DescribeValue() {
  std::optional<RegistryValueData> value;
  if (!ReadRegistryValue(HKEY_LOCAL_MACHINE, kCurrentVersionKey, kValueName, value)) {
    return {};
  }
  if (!value) {
    return std::string(kNone);
  }
  std::string digits;
  std::string text = Format("%lu:%s", static_cast<unsigned long>(value->type),
                            iwiHexText(digits, value->bytes.data(), value->bytes.size()).c_str());
  if (text.size() >= kPropertyLength) {
    Log("***Value '%s' is too long to be put back; it stays", kValueName);
    return {};
  }
  return text;
}

/// What such a text says; nothing for any other one.
std::optional<RegistryValueData> ParseValue(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos) {
    return std::nullopt;
  }
  RegistryValueData value;
  value.type = static_cast<DWORD>(DecimalValue(text));
  for (text.remove_prefix(colon + 1); text.size() > 1; text.remove_prefix(2)) {
    const std::string byte(text.substr(0, 2));
    value.bytes.push_back(static_cast<BYTE>(std::strtoul(byte.c_str(), nullptr, 16)));
  }
  return value;
}

ResultCode Plan() {
  std::string removal;
  if (!GetProperty("ZQVREMOVE", removal)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (removal == "1") {
    return StackRegistryRemoval(kCurrentVersionKey, kValueName, kBaseComponent);
  }
  std::string version;
  if (!ReadVersion(version)) {
    return ERROR_INSTALL_FAILURE;
  }
  return ResultOf(SetProperty(kHandedValue, version.empty() ? version : DescribeValue()));
}

/// Without a plan, nothing is touched: what the value was could not be put back.
ResultCode SetValue(const std::string &planned) {
  std::string version;
  if (!ReadVersion(version)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (!version.empty() && !planned.empty() &&
      iwiRegSetValue(HKEY_LOCAL_MACHINE, kCurrentVersionKey, kValueName, REG_SZ, version.c_str(), -1)) {
    Log("'%s' set to '%s'", kValueName, version.c_str());
  }
  return ERROR_SUCCESS;
}

ResultCode PutBack(const std::string &planned) {
  if (planned == kNone) {
    return ResultOf(iwiRegDeleteValue(HKEY_LOCAL_MACHINE, kCurrentVersionKey, kValueName, true));
  }
  const std::optional<RegistryValueData> value = ParseValue(planned);
  if (!value) {
    LogLine("Nothing to put back");
    return ERROR_SUCCESS;
  }
  return ResultOf(iwiRegWriteValue(HKEY_LOCAL_MACHINE, kCurrentVersionKey, kValueName, value->type, value->bytes.data(),
                                   static_cast<DWORD>(value->bytes.size()), nullptr));
}

}  // namespace

ResultCode MigrateRegistry() {
  const Phase phase = AnnouncePhase();
  if (phase == Phase::scriptGeneration) {
    return Plan();
  }
  std::string planned;
  if (!GetProperty(kHandedValue, planned)) {
    return ERROR_INSTALL_FAILURE;
  }
  return phase == Phase::rollback ? PutBack(planned) : SetValue(planned);
}

}  // namespace zqv
