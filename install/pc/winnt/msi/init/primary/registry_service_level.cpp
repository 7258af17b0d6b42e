#include "init/primary/registry_service_level.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "base/text.h"
#include "base/vrmf.h"
#include "runtime/log.h"
#include "services/files/existence.h"
#include "services/system/product_key.h"
#include "services/system/registry.h"
#include "services/system/registry_values.h"

namespace zqv {

namespace {

constexpr std::string_view kMarker = kMaintenanceMarker;
constexpr char kShipped[] = "Shipped";
constexpr char kValidFile[] = "Valid.csd";
constexpr DWORD kShownBytes = 64;

struct Levels {
  Vrmf shipped;
  Vrmf latest;
  Vrmf previous;
  std::string rollbackFolder;
};

bool IsHigher(const Vrmf &a, const Vrmf &b) { return CompareVrmf(a, b) > 0; }

void Raise(Vrmf &level, const Vrmf &least) {
  if (IsHigher(least, level)) {
    level = least;
  }
}

std::string TypeName(DWORD type) {
  switch (type) {
    case REG_SZ:
      return "REG_SZ";
    case REG_EXPAND_SZ:
      return "REG_EXPAND_SZ";
    case REG_DWORD:
      return "REG_DWORD";
    case REG_BINARY:
      return "REG_BINARY";
    default:
      return Format("%u", static_cast<unsigned>(type));
  }
}

/// What the log shows of the value's data: of bytes that are neither a text nor a number, the first only.
std::string ShownData(const EnumeratedValue &value) {
  if (value.IsText()) {
    return value.Text();
  }
  DWORD number = 0;
  if (value.type == REG_DWORD && value.size == sizeof number) {
    std::memcpy(&number, value.data, sizeof number);
    return Format("%u", static_cast<unsigned>(number));
  }
  std::string text;
  iwiHexText(text, value.data, std::min(value.size, kShownBytes));
  return value.size > kShownBytes ? text + "..." : text;
}

void ApplyMaintenance(const EnumeratedValue &value, Levels &levels) {
  const std::size_t after = std::min(kMarker.size() + 1, value.name.size());  // one separator follows the marker
  const Vrmf level = SplitVrmf("0.0." + value.name.substr(after));
  const std::string folder = value.Text();
  // Deliberate: an empty folder is one like any other, the current drive's root.
  const bool installed = value.IsText() && iwiFileExists(Format("%s\\%s", folder.c_str(), kValidFile));
  if (!installed) {
    Log("Maintenance level '%s.%s' is not currently installed", level.modification.c_str(), level.fix.c_str());
    return;
  }
  Log("Maintenance level '%s.%s' is installed", level.modification.c_str(), level.fix.c_str());
  if (IsHigher(level, levels.latest)) {
    Raise(levels.previous, levels.latest);
    levels.latest = level;
    levels.rollbackFolder = folder;
  } else if (IsHigher(levels.latest, level)) {
    Raise(levels.previous, level);
  }
}

void ApplyShipped(const EnumeratedValue &value, Levels &levels) {
  const std::string text = value.Text();
  Log("Shipped maintenance level is '%s'", text.c_str());
  levels.shipped = SplitVrmf("0.0." + text);
  Raise(levels.latest, levels.shipped);
  Raise(levels.previous, levels.shipped);
}

void Apply(const EnumeratedValue &value, Levels &levels) {
  Log("Found %s value named '%s'", TypeName(value.type).c_str(), value.name.c_str());
  Log("- value '%s'", ShownData(value).c_str());
  if (EqualNoCase(value.name, kShipped)) {
    ApplyShipped(value, levels);
  } else if (value.name.starts_with(kMarker)) {
    ApplyMaintenance(value, levels);
  }
}

ServiceLevel::Level MaintenanceOf(const Vrmf &level) { return {level.modification, level.fix}; }

}  // namespace

bool ReadRegistryServiceLevel(const std::string &rootKey, ServiceLevel &level) {
  level = {};
  const std::string versionKey = rootKey + "\\CurrentVersion";
  ServiceLevel::Level installed;
  std::string vrmf;
  if (ReadRegistryText(HKEY_LOCAL_MACHINE, versionKey, kVrmfValue, vrmf)) {
    const Vrmf fields = SplitVrmf(vrmf);
    Log("Registry VRMF is '%s.%s.%s.%s' (%s)", fields.version.c_str(), fields.release.c_str(),
        fields.modification.c_str(), fields.fix.c_str(), vrmf.c_str());
    installed = MaintenanceOf(fields);
  }
  Levels levels;
  if (!VisitRegistryValues(versionKey + "\\Maintenance Applied",
                           [&](const EnumeratedValue &value) { Apply(value, levels); })) {
    return false;
  }
  // The latest level is never below the shipped one, so there is no shipped level to take its place here.
  if (!IsHigher(levels.latest, Vrmf())) {
    Log("No service applied");
  }
  Log("Latest maintenance level is '%s.%s'", levels.latest.modification.c_str(), levels.latest.fix.c_str());
  Log("RollBack value is '%s'", levels.rollbackFolder.c_str());
  Log("Previous maintenance level is '%s.%s'", levels.previous.modification.c_str(), levels.previous.fix.c_str());
  Log("Shipped maintenance level is '%s.%s'", levels.shipped.modification.c_str(), levels.shipped.fix.c_str());
  level = {std::move(installed), MaintenanceOf(levels.shipped), MaintenanceOf(levels.previous),
           MaintenanceOf(levels.latest), std::move(levels.rollbackFolder)};
  return true;
}

}  // namespace zqv
