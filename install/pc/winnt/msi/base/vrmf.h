#pragma once

#include <string>
#include <string_view>

namespace zqv {

/// A product level: version.release.modification.fix. The lowest, "0.0.0.0", stands for no level.
struct Vrmf {
  std::string version = "0";
  std::string release = "0";
  std::string modification = "0";
  std::string fix = "0";
};

/// Splits a level at its dots. Fields that are missing or empty are "0"; those after the fourth are ignored.
Vrmf SplitVrmf(std::string_view text);

/// Compares field by field: numbers, of any length, by value and before all other texts, those by their characters.
/// Blanks around a field count for nothing. Returns 1 when `a` is the higher, -1 when it is the lower, else 0.
int CompareVrmf(const Vrmf &a, const Vrmf &b);

/// True for a text of decimal digits only, and at least one.
bool IsNumber(std::string_view text);

/// The text without its leading zeros; "0" when nothing is left of it.
std::string_view StripLeadingZeros(std::string_view text);

}  // namespace zqv
