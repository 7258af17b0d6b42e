#include "services/tables/registry_row.h"

#include "runtime/log.h"
#include "services/tables/numbered_row.h"
#include "services/tables/table_row.h"

namespace zqv {

namespace {

constexpr int kLocalMachine = 2;

}  // namespace

ResultCode StackRegistryRemoval(const std::string &key, const std::string &name, const std::string &component) {
  Log("Stacking registry value for removal: '%s' '%s'", key.c_str(), name.c_str());
  return AddNumberedRow("ZQVREGISTRY", [&](const char *row) {
    const FieldValue values[] = {row, kLocalMachine, key.c_str(), name.c_str(), "", component.c_str()};
    return iwiAddTableRow({"Registry", values});
  });
}

}  // namespace zqv
