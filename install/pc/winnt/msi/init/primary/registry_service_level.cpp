#include "init/primary/registry_service_level.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>

#include "base/text.h"
#include "base/vrmf.h"
#include "platform/owner.h"
#include "runtime/log.h"
#include "services/files/existence.h"
#include "services/system/registry.h"

namespace zqv {

namespace {

constexpr std::string_view kMarker = "Maint";
constexpr char kShipped[] = "Shipped";
constexpr char kValidFile[] = "Valid.csd";
constexpr DWORD kShownBytes = 64;

/// Room for the longest name that a value may have, 16,383 characters of up to three bytes, and for a value that no
/// installation has.
constexpr DWORD kNameLimit = 1U << 16;
constexpr DWORD kDataLimit = 1U << 24;

struct Levels {
  Vrmf shipped;
  Vrmf latest;
  Vrmf previous;
  std::string rollbackFolder;
};

/// One value of the key "Maintenance Applied".
struct Value {
  std::string name;
  DWORD type = 0;
  const BYTE *data = nullptr;
  DWORD size = 0;
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

bool IsText(const Value &value) { return value.type == REG_SZ || value.type == REG_EXPAND_SZ; }

/// The value's text up to its terminator, if it has one. A value of another type has no text.
std::string TextOf(const Value &value) {
  if (!IsText(value)) {
    return {};
  }
  return std::string(value.data, std::find(value.data, value.data + value.size, BYTE{0}));
}

/// What the log shows of the value's data: of bytes that are neither a text nor a number, the first only.
std::string ShownData(const Value &value) {
  if (IsText(value)) {
    return TextOf(value);
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

void ApplyMaintenance(const Value &value, Levels &levels) {
  const std::size_t after = std::min(kMarker.size() + 1, value.name.size());  // one separator follows the marker
  const Vrmf level = SplitVrmf("0.0." + value.name.substr(after));
  const std::string folder = TextOf(value);
  // Deliberate: an empty folder is one like any other, the current drive's root.
  const bool installed = IsText(value) && iwiFileExists(Format("%s\\%s", folder.c_str(), kValidFile));
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

void ApplyShipped(const Value &value, Levels &levels) {
  const std::string text = TextOf(value);
  Log("Shipped maintenance level is '%s'", text.c_str());
  levels.shipped = SplitVrmf("0.0." + text);
  Raise(levels.latest, levels.shipped);
  Raise(levels.previous, levels.shipped);
}

void Apply(const Value &value, Levels &levels) {
  Log("Found %s value named '%s'", TypeName(value.type).c_str(), value.name.c_str());
  Log("- value '%s'", ShownData(value).c_str());
  if (EqualNoCase(value.name, kShipped)) {
    ApplyShipped(value, levels);
  } else if (value.name.starts_with(kMarker)) {
    ApplyMaintenance(value, levels);
  }
}

/// The buffers for a value's name and data.
struct ValueRoom {
  std::unique_ptr<char[]> name;
  std::unique_ptr<BYTE[]> data;
  DWORD nameCapacity = 0;
  DWORD dataCapacity = 0;

  /// False, with a line, when there is no memory.
  bool Allocate(DWORD nameSize, DWORD dataSize) {
    name.reset(new (std::nothrow) char[nameSize]);
    if (!name) {
      Log("***Unable to allocate value name buffer %d", static_cast<int>(nameSize));
      return false;
    }
    data.reset(new (std::nothrow) BYTE[dataSize]);
    if (!data) {
      Log("***Unable to allocate value data buffer %d", static_cast<int>(dataSize));
      return false;
    }
    nameCapacity = nameSize;
    dataCapacity = dataSize;
    return true;
  }

  bool CanGrow() const { return nameCapacity < kNameLimit || dataCapacity < kDataLimit; }

  /// Doubles both, up to their limits.
  bool Grow() { return Allocate(Doubled(nameCapacity, kNameLimit), Doubled(dataCapacity, kDataLimit)); }

 private:
  static DWORD Doubled(DWORD size, DWORD limit) { return size < limit ? std::min(2 * size, limit) : size; }
};

LONG ReadValue(HKEY key, DWORD index, const ValueRoom &room, Value &value) {
  DWORD length = room.nameCapacity;
  value.data = room.data.get();
  value.size = room.dataCapacity;
  const LONG error =
      RegEnumValueA(key, index, room.name.get(), &length, nullptr, &value.type, room.data.get(), &value.size);
  if (error == ERROR_SUCCESS) {
    value.name.assign(room.name.get(), length);
  }
  return error;
}

bool EnumerateValues(HKEY key, const std::string &path, Levels &levels) {
  DWORD longestName = 0;
  DWORD longestData = 0;
  LONG error = RegQueryInfoKeyA(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &longestName,
                                &longestData, nullptr, nullptr);
  if (error != ERROR_SUCCESS) {
    Log("***Can't query key info %d", static_cast<int>(error));
    return false;
  }
  ValueRoom room;
  if (!room.Allocate(longestName + 1, longestData + 1)) {
    return false;
  }
  for (DWORD index = 0;; ++index) {
    Value value;
    error = ReadValue(key, index, room, value);
    // The query counts characters, of which each may need several bytes; and a value may have grown since.
    while (error == ERROR_MORE_DATA && room.CanGrow()) {
      if (!room.Grow()) {
        return false;
      }
      error = ReadValue(key, index, room, value);
    }
    if (error == ERROR_NO_MORE_ITEMS) {
      return true;
    }
    if (error != ERROR_SUCCESS) {
      Log("***Can't enumerate Key values: '%s' %d", path.c_str(), static_cast<int>(error));
      return false;
    }
    Apply(value, levels);
  }
}

bool ReadAppliedMaintenance(const std::string &path, Levels &levels) {
  OwnedKey key;
  const LONG error = RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_QUERY_VALUE, key.Out());
  if (error == ERROR_FILE_NOT_FOUND) {
    return true;
  }
  if (error != ERROR_SUCCESS) {
    Log("***Open key error %d '%s'", static_cast<int>(error), path.c_str());
    return false;
  }
  return EnumerateValues(key.Get(), path, levels);
}

ServiceLevel::Level MaintenanceOf(const Vrmf &level) { return {level.modification, level.fix}; }

}  // namespace

bool ReadRegistryServiceLevel(const std::string &rootKey, ServiceLevel &level) {
  level = {};
  const std::string versionKey = rootKey + "\\CurrentVersion";
  ServiceLevel::Level installed;
  std::string vrmf;
  if (ReadRegistryText(HKEY_LOCAL_MACHINE, versionKey, "VRMF", vrmf)) {
    const Vrmf fields = SplitVrmf(vrmf);
    Log("Registry VRMF is '%s.%s.%s.%s' (%s)", fields.version.c_str(), fields.release.c_str(),
        fields.modification.c_str(), fields.fix.c_str(), vrmf.c_str());
    installed = MaintenanceOf(fields);
  }
  Levels levels;
  if (!ReadAppliedMaintenance(versionKey + "\\Maintenance Applied", levels)) {
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
