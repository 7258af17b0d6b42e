#pragma once

#include <string>
#include <string_view>

namespace zqv {

/// Paths as pure text: nothing here looks at a disk. A backslash is a character of its own, and never the second half
/// of another one.

/// Where the next backslash stands, from `from` on, where a character must begin; npos when there is none.
std::size_t NextBackslash(std::string_view path, std::size_t from = 0);

/// True when the path's last character is a backslash.
bool EndsInBackslash(std::string_view path);

/// How iwiTidyPath leaves the end of a path.
enum PathEnd { kWithoutBackslash = 0, kWithBackslash = 1 };

/// Tidies `path` in place and returns it: leading and trailing blanks go, then one pair of surrounding double quotes;
/// every run of backslashes becomes one, but for a leading pair; one trailing backslash is appended or removed. So
/// "C:\" becomes "C:" without its backslash, and an empty path becomes "\" with one.
std::string &iwiTidyPath(PathEnd end, std::string &path);

/// The same for a property's value: the tidied text, without a trailing backslash.
std::string Trimmed(std::string value);

/// A path cut at its last backslash. Without a backslash, the folder is empty and the name is the whole path.
struct SplitPath {
  std::string_view folder;  ///< up to the last backslash, without it
  std::string_view name;    ///< what follows it
  bool hasBackslash;
};
SplitPath SplitAtLastBackslash(std::string_view path);

/// True for a folder that is the same wherever the process happens to be: "X:\..." or "\\server\share". "X:" alone is
/// the drive's root, as a tidied path has it.
bool IsAbsoluteFolder(std::string_view folder);

}  // namespace zqv
