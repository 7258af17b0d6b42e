#include "services/system/registry.h"

#include <algorithm>
#include <cstring>

#include "base/text.h"
#include "platform/owner.h"
#include "runtime/log.h"

namespace zqv {

namespace {

constexpr DWORD kProbe = 2;

HKEY RootOf(HKEY root) { return root == nullptr ? HKEY_LOCAL_MACHINE : root; }

LONG OpenKey(HKEY root, const std::string &path, DWORD access, OwnedKey &key) {
  return RegOpenKeyExA(RootOf(root), path.c_str(), 0, access, key.Out());
}

void Fail(ResultCode *result) {
  if (result != nullptr) {
    *result = ERROR_INSTALL_FAILURE;
  }
}

/// As OpenKey; true when the key is open. A missing key is quiet, any other error is a logged failure.
bool OpenOrFail(HKEY root, const std::string &path, DWORD access, OwnedKey &key, ResultCode *result) {
  const LONG error = OpenKey(root, path, access, key);
  if (error != ERROR_SUCCESS && error != ERROR_FILE_NOT_FOUND) {
    Fail(result);
    Log("***Can't open key '%s' %d", path.c_str(), static_cast<int>(error));
  }
  return error == ERROR_SUCCESS;
}

/// How many zero bytes end a value of the type.
std::size_t TerminatorOf(DWORD type) {
  switch (type) {
    case REG_SZ:
    case REG_EXPAND_SZ:
      return 1;
    case REG_MULTI_SZ:
      return 2;
    default:
      return 0;
  }
}

void Terminate(std::vector<BYTE> &data, DWORD type) {
  const std::size_t wanted = TerminatorOf(type);
  std::size_t present = 0;
  while (present < wanted && present < data.size() && data[data.size() - 1 - present] == 0) {
    ++present;
  }
  data.insert(data.end(), wanted - present, 0);
}

/// Reads exactly `size` bytes. Gives the system's code.
LONG ReadData(HKEY key, const std::string &name, DWORD size, RegistryValueData &value) {
  value.bytes.resize(size);
  const LONG error = RegQueryValueExA(key, name.c_str(), nullptr, &value.type, value.bytes.data(), &size);
  value.bytes.resize(error == ERROR_SUCCESS ? size : 0);
  return error;
}

/// Asks how many bytes a value has. Gives the system's code.
LONG ReadSize(HKEY key, const std::string &name, DWORD &size) {
  BYTE probe[kProbe];
  size = kProbe;
  const LONG error = RegQueryValueExA(key, name.c_str(), nullptr, nullptr, probe, &size);
  return error == ERROR_MORE_DATA ? ERROR_SUCCESS : error;
}

bool ComputeLength(DWORD type, const void *data, int &length) {
  if (type == REG_DWORD) {
    length = sizeof(DWORD);
  } else if (length < 0 && (type == REG_SZ || type == REG_EXPAND_SZ) && data != nullptr) {
    length = static_cast<int>(std::strlen(static_cast<const char *>(data)) + 1);
  }
  return length >= 0;
}

}  // namespace

bool iwiRegReadValue(HKEY root, const std::string &key, const std::string &name, std::vector<BYTE> *data, DWORD *size,
                     ResultCode *result) {
  if (data != nullptr) {
    data->clear();
  }
  if (size != nullptr) {
    *size = 0;
  }
  OwnedKey opened;
  DWORD needed = 0;
  if (!OpenOrFail(root, key, KEY_QUERY_VALUE, opened, result) ||
      ReadSize(opened.Get(), name, needed) != ERROR_SUCCESS) {
    return false;
  }
  if (size != nullptr) {
    *size = needed;
  }
  if (data == nullptr) {
    return true;
  }
  RegistryValueData value;
  const bool read = ReadData(opened.Get(), name, needed, value) == ERROR_SUCCESS;
  if (read) {
    Terminate(value.bytes, value.type);
  }
  *data = std::move(value.bytes);
  return read;
}

bool ReadRegistryValue(HKEY root, const std::string &key, const std::string &name,
                       std::optional<RegistryValueData> &value) {
  value.reset();
  OwnedKey opened;
  ResultCode result = ERROR_SUCCESS;
  if (!OpenOrFail(root, key, KEY_QUERY_VALUE, opened, &result)) {
    return result == ERROR_SUCCESS;
  }
  DWORD size = 0;
  LONG error = ReadSize(opened.Get(), name, size);
  if (error == ERROR_SUCCESS) {
    error = ReadData(opened.Get(), name, size, value.emplace());
  }
  if (error == ERROR_SUCCESS) {
    return true;
  }
  value.reset();
  if (error != ERROR_FILE_NOT_FOUND) {
    Log("***Can't read value '%s' key '%s' %d", name.c_str(), key.c_str(), static_cast<int>(error));
  }
  return error == ERROR_FILE_NOT_FOUND;
}

bool ReadRegistryText(HKEY root, const std::string &key, const std::string &name, std::string &text,
                      ResultCode *result) {
  std::vector<BYTE> data;
  const bool read = iwiRegReadValue(root, key, name, &data, nullptr, result);
  text.assign(data.begin(), std::find(data.begin(), data.end(), BYTE{0}));
  return read;
}

bool iwiRegWriteValue(HKEY root, const std::string &key, const std::string &name, DWORD type, const void *data,
                      DWORD size, ResultCode *result) {
  OwnedKey opened;
  if (!OpenOrFail(root, key, KEY_SET_VALUE, opened, result)) {
    return false;
  }
  const LONG error = RegSetValueExA(opened.Get(), name.c_str(), 0, type, static_cast<const BYTE *>(data), size);
  if (error != ERROR_SUCCESS) {
    Fail(result);
    Log("***Can't set value '%s' key '%s' %d", name.c_str(), key.c_str(), static_cast<int>(error));
    return false;
  }
  return true;
}

bool iwiRegSetValue(HKEY root, const std::string &key, const std::string &name, DWORD type, const void *data,
                    int length) {
  if (!ComputeLength(type, data, length)) {
    return false;
  }
  OwnedKey opened;
  LONG error = OpenKey(root, key, KEY_SET_VALUE, opened);
  if (error != ERROR_SUCCESS) {
    Log("Error %d opening key '%s'", static_cast<int>(error), key.c_str());
    return false;
  }
  error =
      RegSetValueExA(opened.Get(), name.c_str(), 0, type, static_cast<const BYTE *>(data), static_cast<DWORD>(length));
  if (error != ERROR_SUCCESS) {
    Log("Error %d setting key '%s' value '%s'", static_cast<int>(error), key.c_str(), name.c_str());
    return false;
  }
  return true;
}

bool iwiRegDeleteValue(HKEY root, const std::string &key, const std::string &name, bool report) {
  if (name.empty()) {
    return true;
  }
  const std::string shown = Format(RootOf(root) == HKEY_LOCAL_MACHINE ? "HKLM\\%s" : "\\%s", key.c_str());
  OwnedKey opened;
  LONG error = OpenKey(root, key, KEY_SET_VALUE, opened);
  if (error == ERROR_FILE_NOT_FOUND) {
    if (report) {
      Log("Delete value key not found [%s] '%s'", shown.c_str(), name.c_str());
    }
    return true;
  }
  if (error != ERROR_SUCCESS) {
    Log("***Delete value open key error %d [%s] '%s'", static_cast<int>(error), shown.c_str(), name.c_str());
    return false;
  }
  error = RegDeleteValueA(opened.Get(), name.c_str());
  if (error == ERROR_SUCCESS) {
    // Deliberate: the root stands before a key that may name it already.
    Log("Deleted value [HKLM\\%s] '%s'", shown.c_str(), name.c_str());
    return true;
  }
  if (error == ERROR_FILE_NOT_FOUND) {
    if (report) {
      Log("Delete value not found [%s] '%s'", shown.c_str(), name.c_str());
    }
    return true;
  }
  Log("***Delete value error %d [%s] '%s'", static_cast<int>(error), shown.c_str(), name.c_str());
  return false;
}

std::string &iwiHexText(std::string &text, const BYTE *bytes, std::size_t count) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  text.clear();
  for (std::size_t at = 0; at < count; ++at) {
    text += kDigits[bytes[at] >> 4];
    text += kDigits[bytes[at] & 0xF];
  }
  return text;
}

}  // namespace zqv
