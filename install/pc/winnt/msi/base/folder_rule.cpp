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

// What no element of a folder has, and what no file's name has, beside control characters.
constexpr std::string_view kNotInFolder = "<>\"|?*/;:";
constexpr std::string_view kNotInName = "\\/:*?\"<>|";

/// Where the elements begin: behind "C:\" or the two backslashes of a share; npos for any other path.
std::size_t FirstElement(std::string_view folder) {
  if (folder.starts_with("\\\\")) {
    return 2;
  }
  return folder.size() >= 3 && IsLetter(folder[0]) && folder[1] == ':' && folder[2] == '\\' ? 3
                                                                                            : std::string_view::npos;
}

bool HasForbidden(std::string_view text, std::string_view forbidden) {
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = CharacterLength(text, at);
    const auto code = static_cast<unsigned char>(text[at]);
    if (length == 1 && (code < ' ' || code == 0x7F || forbidden.find(text[at]) != std::string_view::npos)) {
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

/// True for what the system takes as it stands. A name of dots only ends with a dot.
bool IsTaken(std::string_view name) {
  return !name.empty() && name.back() != ' ' && name.back() != '.' && !IsDevice(name);
}

bool IsElement(std::string_view element) { return IsTaken(element) && element.front() != ' '; }

/// How many elements a folder has; -1 when one of them cannot be one.
int CountElements(std::string_view folder) {
  int elements = 0;
  for (; !folder.empty(); ++elements) {
    const std::size_t end = NextBackslash(folder);
    if (!IsElement(folder.substr(0, end))) {
      return -1;
    }
    folder.remove_prefix(end + 1);
  }
  return elements;
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
  const std::string_view rest = std::string_view(folder).substr(first);
  return !HasForbidden(rest, kNotInFolder) &&
         CountElements(rest) >= (first == 3 ? 0 : 2);  // a server alone is no place
}

bool IsRoot(const std::string &folder) {
  const std::size_t first = FirstElement(folder);
  return CountElements(std::string_view(folder).substr(first)) == (first == 3 ? 0 : 2);
}

bool IsFileName(std::string_view name) { return IsTaken(name) && !HasForbidden(name, kNotInName); }

bool IsPathBelow(std::string_view path) {
  for (std::size_t end = NextBackslash(path); end != std::string_view::npos; end = NextBackslash(path)) {
    if (!IsFileName(path.substr(0, end))) {
      return false;
    }
    path.remove_prefix(end + 1);
  }
  return IsFileName(path);
}

}  // namespace zqv
