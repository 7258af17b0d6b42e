#pragma once

#include <string>

namespace zqv {

/// What is there on the disk. Whatever is not there is no error and leaves no line beyond those that a test always
/// writes; other failures are logged and count as not there.

/// 1 when there is a file of exactly this name, but for case: a pattern never is one. The path must hold a backslash.
int iwiFileExists(const std::string &path);

/// 1 when there is a folder of exactly this name, but for case. Logs what it looks for and what it finds.
int iwiFolderExists(const std::string &path);

/// 1 when the folder holds nothing, and also when there is no such folder.
int iwiIsFolderEmpty(const std::string &folder);

/// 1 when the first entry that the path or pattern matches is a file, whose name goes to `name` if given; otherwise
/// `name` stays. Every outcome is logged.
int iwiFindFile(const std::string &pattern, std::string *name);

/// Looks for a folder by the beginning of its name, the last element of `path`, without regard to case. 1 with the
/// first one's name in `name`, else 0 with `name` untouched. A path without a backslash is a folder to look for "dummy"
/// in.
int iwiFindExtension(const std::string &path, std::string &name);

}  // namespace zqv
