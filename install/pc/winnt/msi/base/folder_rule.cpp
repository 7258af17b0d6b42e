#include "base/folder_rule.h"

#include <algorithm>
#include <string_view>

#include "base/code_page.h"
#include "base/path.h"
#include "base/text.h"

namespace zqv {

namespace {

constexpr std::size_t kMostCharacters = 247;

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

bool IsForbidden(char c) {
  const auto code = static_cast<unsigned char>(c);
  return code < ' ' || code == 0x7F || std::string_view("<>\"|?*/;:").find(c) != std::string_view::npos;
}

/// Where the elements begin: behind "C:\" or the two backslashes of a share; npos for any other path.
std::size_t FirstElement(std::string_view folder) {
  if (folder.starts_with("\\\\")) {
    return 2;
  }
  return folder.size() >= 3 && IsLetter(folder[0]) && folder[1] == ':' && folder[2] == '\\' ? 3
                                                                                            : std::string_view::npos;
}

bool HasForbidden(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = CharacterLength(text, at);
    if (length == 1 && IsForbidden(text[at])) {
      return true;
    }
    at += length;
  }
  return false;
}

bool IsDevice(std::string_view element) {
  const std::string_view name = element.substr(0, element.find('.'));
  if (name.size() == 4 && name[3] >= '1' && name[3] <= '9') {
    return StartsWithNoCase(name, "COM") || StartsWithNoCase(name, "LPT");
  }
  constexpr std::string_view kNames[] = {"CON", "PRN", "AUX", "NUL"};
  return std::any_of(std::begin(kNames), std::end(kNames), [&](auto device) { return EqualNoCase(name, device); });
}

/// An element of dots only ends with a dot.
bool IsElement(std::string_view element) {
  return !element.empty() && element.front() != ' ' && element.back() != ' ' && element.back() != '.' &&
         !IsDevice(element);
}

}  // namespace

std::string TidiedFolder(const std::string &value) {
  std::string folder = value;
  iwiTidyPath(kWithBackslash, folder);
  return Trimmed(folder).empty() ? std::string() : folder;
}

bool IsValidFolder(const std::string &folder) {
  const std::size_t first = FirstElement(folder);
  if (first == std::string::npos || folder.size() > kMostCharacters || !EndsInBackslash(folder)) {
    return false;
  }
  std::string_view rest = std::string_view(folder).substr(first);
  if (HasForbidden(rest)) {
    return false;
  }
  int elements = 0;
  for (; !rest.empty(); ++elements) {
    const std::size_t end = NextBackslash(rest);
    if (!IsElement(rest.substr(0, end))) {
      return false;
    }
    rest.remove_prefix(end + 1);
  }
  return first == 3 || elements >= 2;  // a server alone is no place
}

}  // namespace zqv
