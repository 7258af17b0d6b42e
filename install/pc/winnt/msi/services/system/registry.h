#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "base/result_code.h"
#include "platform/win32.h"

namespace zqv {

/// Registry values. A null root stands for HKEY_LOCAL_MACHINE. No routine makes a key. An accumulated `result`, where
/// one is given, gets ERROR_INSTALL_FAILURE on a failure and is left alone otherwise; a missing key or value is no
/// failure.

/// Reads a value of any type. `data`, if not null, gets its bytes; a text that lacks its terminator gets one after
/// them. `size`, if not null, gets the size in bytes that the registry gives. True when the value was read, else false,
/// with `data` empty and `size` 0.
[[nodiscard]] bool iwiRegReadValue(HKEY root, const std::string &key, const std::string &name, std::vector<BYTE> *data,
                                   DWORD *size, ResultCode *result);

/// A value as the registry has it.
struct RegistryValueData {
  DWORD type = 0;
  std::vector<BYTE> bytes;
};

/// Reads a value with its type, and adds nothing to its bytes. `value` gets nothing where there is none; false, with a
/// line, when it cannot be read.
[[nodiscard]] bool ReadRegistryValue(HKEY root, const std::string &key, const std::string &name,
                                     std::optional<RegistryValueData> &value);

/// Reads a value as a text, up to its first terminator. False, with `text` empty, when there is none.
[[nodiscard]] bool ReadRegistryText(HKEY root, const std::string &key, const std::string &name, std::string &text,
                                    ResultCode *result = nullptr);

/// Writes a value into an existing key. True when it was written.
[[nodiscard]] bool iwiRegWriteValue(HKEY root, const std::string &key, const std::string &name, DWORD type,
                                    const void *data, DWORD size, ResultCode *result);

/// Writes a value into an existing key. `length` is in bytes; a negative one stands for the whole text and its
/// terminator where `type` is REG_SZ or REG_EXPAND_SZ, and for nothing to write otherwise. A REG_DWORD always has four
/// bytes. True when it was written; its failures are told without asterisks.
[[nodiscard]] bool iwiRegSetValue(HKEY root, const std::string &key, const std::string &name, DWORD type,
                                  const void *data, int length);

/// Deletes a value; an empty name does nothing. `report` has a missing key or value logged. False on a real
/// failure.
[[nodiscard]] bool iwiRegDeleteValue(HKEY root, const std::string &key, const std::string &name, bool report);

/// Gives `text` two upper-case hexadecimal digits for each byte, and returns it.
std::string &iwiHexText(std::string &text, const BYTE *bytes, std::size_t count);

}  // namespace zqv
