#include "services/tables/binary_stream.h"

#include "base/code_page.h"
#include "base/result_code.h"
#include "platform/c_file.h"
#include "platform/owner.h"
#include "runtime/installer_result.h"
#include "runtime/log.h"
#include "runtime/table_query.h"

namespace zqv {

namespace {

constexpr DWORD kBlock = 256;
constexpr UINT kNameField = 1;
constexpr UINT kDataField = 2;

bool IsMeant(const std::string &name, const std::string &prefix, const std::string &suffix) {
  if (!suffix.empty()) {
    return StartsWithName(name, prefix + suffix);
  }
  return StartsWithName(name, prefix) && (name.size() == prefix.size() || name[prefix.size()] == '.');
}

/// Logs, and stores if asked for, what follows a dot after the first `known` characters of a row's name.
void TakeComponentSuffix(const std::string &name, std::size_t known, std::string *componentSuffix) {
  const bool has = name.size() > known && name[known] == '.';
  const std::string found = has ? name.substr(known + 1) : "";
  if (componentSuffix != nullptr) {
    *componentSuffix = found;
  }
  if (has) {
    Log("Component suffix is: '%s'", found.c_str());
  } else {
    Log("No component suffix");
  }
}

bool WriteStream(MSIHANDLE row, const std::string &name, const std::string &path) {
  OwnedStream file(OpenCFile(path.c_str(), "wb"));
  if (!file) {
    Log("***Can't open output: '%s'", path.c_str());
    return false;
  }
  ResultCode result = ERROR_SUCCESS;
  DWORD total = 0;
  DWORD length = kBlock;
  bool written = true;
  while (written && length == kBlock) {
    char block[kBlock];
    const ResultCode read = MsiRecordReadStream(row, kDataField, block, &length);
    if (iwiCheckMsiResult("MsiRecordReadStream", name.c_str(), read, result) != ERROR_SUCCESS) {
      return false;
    }
    written = std::fwrite(block, 1, length, file.Get()) == length;
    total += length;
  }
  // What the C library still holds is written when the file is closed.
  written = file.Close() == 0 && written;
  if (!written) {
    Log("***Error writing '%s'", path.c_str());
    return false;
  }
  Log("Written %d bytes to '%s'", static_cast<int>(total), path.c_str());
  return true;
}

}  // namespace

bool iwiUnpackBinary(const std::string &prefix, const std::string &suffix, const std::string &path,
                     std::string *componentSuffix) {
  ResultCode result = ERROR_SUCCESS;
  bool found = false;
  const auto unpack = [&](MSIHANDLE row) {
    std::string name;
    if (iwiCheckMsiResult("MsiRecordGetString", "Name", ReadRecordText(row, kNameField, name), result) !=
            ERROR_SUCCESS ||
        !IsMeant(name, prefix, suffix)) {
      return true;
    }
    found = true;
    Log("Unpacking binary Name: '%s%s'", prefix.c_str(), suffix.c_str());
    TakeComponentSuffix(name, prefix.size() + suffix.size(), componentSuffix);
    return WriteStream(row, name, path);
  };
  const bool complete = VisitRows("SELECT * FROM Binary", result, unpack);
  if (!found) {
    Log("***Can't find binary Name: '%s%s'", prefix.c_str(), suffix.c_str());
  }
  return complete && found && result == ERROR_SUCCESS;
}

}  // namespace zqv
