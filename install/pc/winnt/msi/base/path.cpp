#include "base/path.h"

#include "base/text.h"

namespace zqv {

std::string &iwiTidyPath(PathEnd end, std::string &path) {
  path = std::string(StripBlanks(path));
  if (!path.empty() && path.front() == '"') {
    path.erase(0, 1);
    if (!path.empty() && path.back() == '"') {
      path.pop_back();
    }
  }
  std::size_t kept = 0;
  for (std::size_t at = 0; at < path.size(); ++at) {
    const bool repeated = path[at] == '\\' && kept >= 2 && path[kept - 1] == '\\';
    if (!repeated) {
      path[kept++] = path[at];
    }
  }
  path.resize(kept);
  const bool endsInBackslash = !path.empty() && path.back() == '\\';
  if (end == kWithBackslash && !endsInBackslash) {
    path += '\\';
  } else if (end == kWithoutBackslash && endsInBackslash) {
    path.pop_back();
  }
  return path;
}

std::string Trimmed(std::string value) { return iwiTidyPath(kWithoutBackslash, value); }

SplitPath SplitAtLastBackslash(std::string_view path) {
  const std::size_t at = path.rfind('\\');
  if (at == std::string_view::npos) {
    return {{}, path};
  }
  return {path.substr(0, at), path.substr(at + 1)};
}

}  // namespace zqv
