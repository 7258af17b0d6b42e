#include "services/tables/remove_registry.h"

#include <string_view>

#include "base/path.h"
#include "runtime/log.h"
#include "services/tables/numbered_row.h"
#include "services/tables/table_row.h"

namespace zqv {

namespace {

constexpr DWORD kRecordCounterLength = 64;
constexpr int kLocalMachine = 2;

struct RootName {
  std::string_view name;
  int root;  ///< as the table numbers it
};
constexpr RootName kRootNames[] = {
    {"HKEY_CLASSES_ROOT", 0}, {"HKEY_CURRENT_USER", 1}, {"HKEY_LOCAL_MACHINE", kLocalMachine}, {"HKEY_USERS", 3}};

struct RootedKey {
  int root;
  std::string key;
};

RootedKey SplitRoot(const std::string &key) {
  const std::size_t at = NextBackslash(key);
  if (at != std::string::npos) {
    for (const RootName &known : kRootNames) {
      if (known.name == std::string_view(key).substr(0, at)) {
        return {known.root, key.substr(at + 1)};
      }
    }
  }
  return {kLocalMachine, key};
}

}  // namespace

ResultCode StackDeleteRegistryValue(const std::string &key, const std::string &name, const std::string &component) {
  Log("StackDeleteRegistryValue '%s' '%s'", key.c_str(), name.c_str());
  const auto add = [&](const char *row) {
    const RootedKey rooted = SplitRoot(key);
    const FieldValue values[] = {row, rooted.root, rooted.key.c_str(), name.c_str(), component.c_str()};
    return iwiAddTableRow({"RemoveRegistry", values});
  };
  return AddNumberedRow("ZQVRECORD", add, kRecordCounterLength);
}

}  // namespace zqv
