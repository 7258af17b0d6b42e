#pragma once

#include <string>

namespace zqv {

/// What is there on the disk. Whatever is not there is no error and leaves no line beyond those that a test always
/// writes; other failures are logged and count as not there.

/// True when there is a file of exactly this name, but for case: a pattern never is one. The path must hold a
/// backslash.
bool iwiFileExists(const std::string &path);

/// True when there is a folder of exactly this name, but for case. Logs what it looks for and what it finds.
bool iwiFolderExists(const std::string &path);

/// True when the folder holds nothing, and also when there is no such folder.
bool iwiIsFolderEmpty(const std::string &folder);

/// True when the first entry that the path or pattern matches is a file, whose name goes to `name` if given; otherwise
/// `name` stays. Every outcome is logged.
bool iwiFindFile(const std::string &pattern, std::string *name);

/// Looks for a folder by the beginning of its name, the last element of `path`, without regard to case. True with
/// the first one's name in `name`, else false with `name` untouched. A path without a backslash is a folder to look for
/// "dummy" in.
bool iwiFindExtension(const std::string &path, std::string &name);

}  // namespace zqv
