#include "services/system/registry_values.h"

#include <algorithm>
#include <memory>
#include <new>

#include "platform/owner.h"
#include "runtime/log.h"

namespace zqv {

namespace {

/// Room for the longest name that a value may have, 16,383 characters of up to three bytes, and for a value that no
/// installation has.
constexpr DWORD kNameLimit = 1U << 16;
constexpr DWORD kDataLimit = 1U << 24;

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

LONG ReadValue(HKEY key, DWORD index, const ValueRoom &room, EnumeratedValue &value) {
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

bool EnumerateValues(HKEY key, const std::string &path,
                     const std::function<void(const EnumeratedValue &value)> &visit) {
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
    EnumeratedValue value;
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
    visit(value);
  }
}

}  // namespace

std::string EnumeratedValue::Text() const {
  return IsText() ? std::string(data, std::find(data, data + size, BYTE{0})) : std::string();
}

bool VisitRegistryValues(const std::string &path, const std::function<void(const EnumeratedValue &value)> &visit) {
  OwnedKey key;
  const LONG error = RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_QUERY_VALUE, key.Out());
  if (error == ERROR_FILE_NOT_FOUND) {
    return true;
  }
  if (error != ERROR_SUCCESS) {
    Log("***Open key error %d '%s'", static_cast<int>(error), path.c_str());
    return false;
  }
  return EnumerateValues(key.Get(), path, visit);
}

}  // namespace zqv
