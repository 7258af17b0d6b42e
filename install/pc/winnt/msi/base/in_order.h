#pragma once

#include <cstddef>

namespace zqv {

/// Whether each row of a table stands at the place that its enumerator, the member `Key`, is the number of; then the
/// enumerator is an index of the table.
template <auto Key, typename Row, std::size_t kSize>
constexpr bool InOrder(const Row (&table)[kSize]) {
  for (std::size_t at = 0; at < kSize; ++at) {
    if (static_cast<std::size_t>(table[at].*Key) != at) {
      return false;
    }
  }
  return true;
}

}  // namespace zqv
