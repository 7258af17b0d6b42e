#include "previous/data/name_list.h"

#include <algorithm>
#include <string_view>

#include "base/code_page.h"
#include "base/folder_rule.h"
#include "runtime/log.h"
#include "runtime/property.h"

namespace zqv {

namespace {

constexpr char kBetweenNames = '|';
constexpr char kSemicolon = '?';

/// The names as values that each fit a property.
std::vector<std::string> ComposeValues(const std::vector<std::string> &names) {
  std::vector<std::string> values;
  for (std::string name : names) {
    std::replace(name.begin(), name.end(), ';', kSemicolon);
    if (values.empty() || values.back().size() + 1 + name.size() >= kPropertyLength) {
      values.push_back(name);
    } else {
      values.back() += kBetweenNames + name;
    }
  }
  return values;
}

void TakeNames(std::string_view value, std::vector<std::string> &names) {
  while (!value.empty()) {
    const std::size_t end = std::min(FindCharacter(value, kBetweenNames), value.size());
    std::string name(value.substr(0, end));
    value.remove_prefix(std::min(end + 1, value.size()));
    std::replace(name.begin(), name.end(), kSemicolon, ';');
    if (IsFileName(name)) {
      names.push_back(name);
    } else {
      Log("***'%s' is no file name", name.c_str());
    }
  }
}

std::string NumberedName(const char *property, std::size_t number) { return property + std::to_string(number); }

}  // namespace

bool HandOverNames(const char *property, const std::vector<std::string> &names) {
  std::vector<std::string> values = ComposeValues(names);
  if (values.size() > kNameProperties) {
    Log("***%u names are more than '%s' can hand over", static_cast<unsigned>(names.size()), property);
    return false;
  }
  if (values.size() < kNameProperties) {
    values.emplace_back();
  }
  for (std::size_t at = 0; at < values.size(); ++at) {
    if (!SetProperty(NumberedName(property, at + 1).c_str(), values[at])) {
      return false;
    }
  }
  return true;
}

bool ReadHandedNames(const char *property, std::vector<std::string> &names) {
  for (std::size_t number = 1; number <= kNameProperties; ++number) {
    std::string value;
    if (!GetProperty(NumberedName(property, number).c_str(), value)) {
      return false;
    }
    if (value.empty()) {
      break;
    }
    TakeNames(value, names);
  }
  return true;
}

}  // namespace zqv
