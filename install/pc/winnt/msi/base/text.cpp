#include "base/text.h"

#include <algorithm>
#include <cstdio>
#include <limits>

namespace zqv {

namespace {

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// The text without those of the characters that it begins and ends with.
std::string_view Strip(std::string_view text, std::string_view characters) {
  text.remove_prefix(std::min(text.find_first_not_of(characters), text.size()));
  return text.substr(0, text.find_last_not_of(characters) + 1);
}

}  // namespace

std::string Format(const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::string text = FormatList(format, arguments);
  va_end(arguments);
  return text;
}

std::string FormatList(const char *format, va_list arguments) {
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, again);
  va_end(again);
  std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, arguments);
  return text;
}

bool EqualNoCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return Lower(x) == Lower(y); });
}

bool StartsWithNoCase(std::string_view text, std::string_view prefix) {
  return EqualNoCase(text.substr(0, prefix.size()), prefix);
}

std::string LowerCase(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), Lower);
  return lower;
}

bool LessNoCase::operator()(std::string_view a, std::string_view b) const {
  return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                      [](char x, char y) { return Lower(x) < Lower(y); });
}

int DecimalValue(std::string_view text) {
  const auto isSpace = [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); };
  std::size_t at = 0;
  while (at < text.size() && isSpace(text[at])) {
    ++at;
  }
  const bool negative = at < text.size() && text[at] == '-';
  if (at < text.size() && (text[at] == '-' || text[at] == '+')) {
    ++at;
  }
  long long value = 0;
  for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
    value = std::min(value * 10 + (text[at] - '0'), 1LL + std::numeric_limits<int>::max());
  }
  value = negative ? -value : value;
  return static_cast<int>(std::min<long long>(value, std::numeric_limits<int>::max()));
}

std::string_view StripBlanks(std::string_view text) { return Strip(text, " "); }

bool IsSpace(char c) { return c == ' ' || c == '\t'; }

std::string_view StripSpace(std::string_view text) { return Strip(text, " \t"); }

std::string_view CutAtLineBreak(std::string_view text) {
  text = text.substr(0, text.find('\n'));
  return text.substr(0, text.find('\r'));
}

int NextCounter(int counter) { return counter == std::numeric_limits<int>::max() ? counter : counter + 1; }

}  // namespace zqv
