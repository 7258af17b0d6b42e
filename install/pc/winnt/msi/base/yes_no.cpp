#include "base/yes_no.h"

#include "base/text.h"

namespace zqv {

namespace {

YesNo Meaning(std::string_view value, YesNo byDefault) {
  if (value == "1" || EqualNoCase(value, "yes")) {
    return YesNo::yes;
  }
  return value == "0" || EqualNoCase(value, "no") ? YesNo::no : byDefault;
}

}  // namespace

bool IsNo(std::string_view value, YesNo byDefault) { return Meaning(value, byDefault) == YesNo::no; }

bool IsYes(std::string_view value, YesNo byDefault) { return Meaning(value, byDefault) == YesNo::yes; }

}  // namespace zqv
