#include "base/version.h"

#include <algorithm>

#include "base/text.h"

namespace zqv {

namespace {

constexpr int kElements = 4;

/// Cuts off the first element and gives its value.
int TakeElement(std::string_view &version) {
  const std::size_t dot = std::min(version.find('.'), version.size());
  const int value = DecimalValue(version.substr(0, dot));
  version.remove_prefix(std::min(dot + 1, version.size()));
  return value;
}

}  // namespace

int iwiCompareVersions(std::string_view a, std::string_view b) {
  for (int element = 0; element < kElements; ++element) {
    const int ofA = TakeElement(a);
    const int ofB = TakeElement(b);
    if (ofA != ofB) {
      return ofA > ofB ? 1 : -1;
    }
  }
  return 0;
}

}  // namespace zqv
