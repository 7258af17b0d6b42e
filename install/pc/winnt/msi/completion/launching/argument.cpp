#include "completion/launching/argument.h"

#include "base/code_page.h"

namespace zqv {

std::string QuotedArgument(const std::string &value) {
  std::string quoted = "\"";
  std::size_t backslashes = 0;  // that end what is there so far: before a quote each counts half
  for (std::size_t at = 0; at < value.size();) {
    const std::size_t length = CharacterLength(value, at);
    const char c = value[at];
    if (c == '"') {
      quoted.append(backslashes + 1, '\\');
    }
    backslashes = c == '\\' ? backslashes + 1 : 0;
    quoted.append(value, at, length);
    at += length;
  }
  return quoted.append(backslashes, '\\') + '"';
}

}  // namespace zqv
