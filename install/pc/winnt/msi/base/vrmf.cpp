#include "base/vrmf.h"

#include <algorithm>

#include "base/text.h"

namespace zqv {

namespace {

std::string TakeField(std::string_view &text) {
  const std::size_t dot = std::min(text.find('.'), text.size());
  const std::string_view field = text.substr(0, dot);
  text.remove_prefix(std::min(dot + 1, text.size()));
  return std::string(field.empty() ? "0" : field);
}

int Sign(int order) { return (order > 0 ? 1 : 0) - (order < 0 ? 1 : 0); }

/// What a field counts as: a number without leading zeros, or the text.
std::string_view ValueOf(std::string_view field) {
  field = StripBlanks(field);
  return field.empty() || IsNumber(field) ? StripLeadingZeros(field) : field;
}

int CompareFields(std::string_view a, std::string_view b) {
  a = ValueOf(a);
  b = ValueOf(b);
  const bool numeric = IsNumber(a);
  if (numeric != IsNumber(b)) {
    return numeric ? -1 : 1;
  }
  if (numeric && a.size() != b.size()) {
    return a.size() > b.size() ? 1 : -1;
  }
  return Sign(a.compare(b));
}

}  // namespace

Vrmf SplitVrmf(std::string_view text) {
  Vrmf level;
  for (std::string *field : {&level.version, &level.release, &level.modification, &level.fix}) {
    *field = TakeField(text);
  }
  return level;
}

int CompareVrmf(const Vrmf &a, const Vrmf &b) {
  for (const auto field : {&Vrmf::version, &Vrmf::release, &Vrmf::modification, &Vrmf::fix}) {
    const int order = CompareFields(a.*field, b.*field);
    if (order != 0) {
      return order;
    }
  }
  return 0;
}

bool IsNumber(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

std::string_view StripLeadingZeros(std::string_view text) {
  const std::size_t first = text.find_first_not_of('0');
  return first == std::string_view::npos ? "0" : text.substr(first);
}

}  // namespace zqv
