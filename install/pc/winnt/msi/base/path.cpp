#include "base/path.h"

#include <algorithm>

#include "base/code_page.h"
#include "base/text.h"

namespace zqv {

namespace {

std::size_t LastBackslash(std::string_view path) {
  std::size_t last = std::string_view::npos;
  for (std::size_t at = NextBackslash(path); at != std::string_view::npos; at = NextBackslash(path, at + 1)) {
    last = at;
  }
  return last;
}

}  // namespace

std::size_t NextBackslash(std::string_view path, std::size_t from) { return FindCharacter(path, '\\', from); }

bool EndsInBackslash(std::string_view path) {
  const std::size_t last = LastBackslash(path);
  return last != std::string_view::npos && last + 1 == path.size();
}

std::string &iwiTidyPath(PathEnd end, std::string &path) {
  path = std::string(StripBlanks(path));
  if (!path.empty() && path.front() == '"') {
    path.erase(0, 1);
    if (!path.empty() && path.back() == '"') {
      path.pop_back();
    }
  }
  for (std::size_t at = NextBackslash(path); at != std::string::npos; at = NextBackslash(path, at + 1)) {
    const std::size_t behind = std::min(path.find_first_not_of('\\', at), path.size());
    const std::size_t kept = std::min<std::size_t>(at == 0 ? 2 : 1, behind - at);
    path.erase(at + kept, behind - at - kept);
  }
  const bool endsInBackslash = EndsInBackslash(path);
  if (end == kWithBackslash && !endsInBackslash) {
    path += '\\';
  } else if (end == kWithoutBackslash && endsInBackslash) {
    path.pop_back();
  }
  return path;
}

std::string Trimmed(std::string value) { return iwiTidyPath(kWithoutBackslash, value); }

SplitPath SplitAtLastBackslash(std::string_view path) {
  const std::size_t at = LastBackslash(path);
  if (at == std::string_view::npos) {
    return {{}, path, false};
  }
  return {path.substr(0, at), path.substr(at + 1), true};
}

bool IsAbsoluteFolder(std::string_view folder) {
  if (folder.starts_with("\\\\")) {
    const std::size_t end = NextBackslash(folder, 2);
    return end != std::string_view::npos && end > 2 && end + 1 < folder.size() && folder[end + 1] != '\\';
  }
  const bool startsWithLetter =
      !folder.empty() && ((folder[0] >= 'A' && folder[0] <= 'Z') || (folder[0] >= 'a' && folder[0] <= 'z'));
  return startsWithLetter && folder.substr(1, 1) == ":" && (folder.size() == 2 || folder[2] == '\\');
}

}  // namespace zqv
