#pragma once

#include <string_view>

namespace zqv {

/// Switches that a user sets to yes or no: "1" or "yes", "0" or "no", in either case. What any other value says, the
/// empty one included, is the default.
enum class YesNo { no, yes };

bool IsNo(std::string_view value, YesNo byDefault = YesNo::yes);
bool IsYes(std::string_view value, YesNo byDefault = YesNo::no);

}  // namespace zqv
