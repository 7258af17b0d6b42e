#pragma once

#include <cstdarg>
#include <string>
#include <string_view>

#include "platform/compiler.h"

namespace zqv {

/// Formats as printf does; the text may be of any length.
std::string Format(const char *format, ...) ZQV_PRINTF(1, 2);

/// As Format, with the arguments already collected.
std::string FormatList(const char *format, va_list arguments) ZQV_PRINTF(1, 0);

/// Compares without regard to the case of the letters A to Z; no locale takes part.
bool EqualNoCase(std::string_view a, std::string_view b);
bool StartsWithNoCase(std::string_view text, std::string_view prefix);
std::string LowerCase(std::string_view text);

/// Orders texts without regard to case, for sorted containers.
struct LessNoCase {
  using is_transparent = void;
  bool operator()(std::string_view a, std::string_view b) const;
};

/// A counter read as a decimal number and raised by one; the largest number stays as it is.
int NextCounter(int counter);

/// Reads a decimal number as the C library's atoi does: leading blanks, a sign, digits up to the first other character.
/// No digits give 0; a number that does not fit gives the nearest that does.
int DecimalValue(std::string_view text);

/// The text without its leading and trailing blanks.
std::string_view StripBlanks(std::string_view text);

/// True for a blank or a tab: files that people write have both.
bool IsSpace(char c);

/// The text without its leading and trailing blanks and tabs.
std::string_view StripSpace(std::string_view text);

/// The text up to its first carriage return or line feed.
std::string_view CutAtLineBreak(std::string_view text);

}  // namespace zqv
