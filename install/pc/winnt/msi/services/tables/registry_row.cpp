#include "services/tables/registry_row.h"

#include <string_view>

#include "base/code_page.h"
#include "runtime/log.h"
#include "services/tables/numbered_row.h"
#include "services/tables/table_row.h"

namespace zqv {

namespace {

constexpr int kLocalMachine = 2;

/// The text as a column of the data type Formatted writes it: a bracket or brace is literal in "[\x]".
std::string Escaped(const std::string &text) {
  std::string escaped;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = CharacterLength(text, at);
    const bool isSpecial = length == 1 && std::string_view("[]{}").find(text[at]) != std::string_view::npos;
    escaped += isSpecial ? std::string("[\\") + text[at] + "]" : text.substr(at, length);
    at += length;
  }
  return escaped;
}

ResultCode AddRow(const std::string &key, const std::string &name, const std::string &value,
                  const std::string &component) {
  const std::string escapedName = Escaped(name);
  return AddNumberedRow("ZQVREGISTRY", [&](const char *row) {
    const FieldValue values[] = {row,           kLocalMachine,    key.c_str(), escapedName.c_str(),
                                 value.c_str(), component.c_str()};
    return iwiAddTableRow({"Registry", values});
  });
}

}  // namespace

ResultCode StackRegistryValue(const std::string &key, const std::string &name, const std::string &text,
                              const std::string &component) {
  Log("Stacking registry value: '%s' '%s' = '%s'", key.c_str(), name.c_str(), text.c_str());
  // At a value's beginning a number sign says of what type it is, and the first of two is dropped.
  return AddRow(key, name, (text.starts_with('#') ? "#" : "") + Escaped(text), component);
}

ResultCode StackRegistryRemoval(const std::string &key, const std::string &name, const std::string &component) {
  Log("Stacking registry value for removal: '%s' '%s'", key.c_str(), name.c_str());
  return AddRow(key, name, "", component);
}

}  // namespace zqv
