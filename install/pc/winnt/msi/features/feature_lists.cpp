#include "features/feature_lists.h"

#include <algorithm>

#include "base/text.h"

namespace zqv {

std::vector<std::string_view> NamesInList(std::string_view list) {
  std::vector<std::string_view> names;
  for (std::size_t at = 0; at < list.size();) {
    const std::size_t end = std::min(list.find(',', at), list.size());
    const std::string_view name = StripBlanks(list.substr(at, end - at));
    if (!name.empty()) {
      names.push_back(name);
    }
    at = end + 1;
  }
  return names;
}

bool IsAllFeatures(std::string_view name) { return EqualNoCase(name, "ALL"); }

}  // namespace zqv
