#pragma once

#include <string_view>

namespace zqv {

/// Compares two dotted versions, their first four elements from the left and each as a decimal number; one that is
/// missing, or is no number, counts as 0. Returns 1 when `a` is the higher, -1 when it is the lower, else 0.
int iwiCompareVersions(std::string_view a, std::string_view b);

}  // namespace zqv
