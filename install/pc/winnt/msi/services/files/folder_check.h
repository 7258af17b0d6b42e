#pragma once

#include <string>

namespace zqv {

/// Reads a property that names a folder, as TidiedFolder leaves it. False, with `folder` empty, when it cannot be read.
[[nodiscard]] bool GetFolderProperty(const char *name, std::string &folder);

/// True for a folder that is valid by the rule of base/folder_rule.h; tells the other kind, with the name of what it
/// came from: a user's choice, a property, or a value of the registry. `folder` is tidied; an empty one is invalid.
[[nodiscard]] bool JudgeFolder(const std::string &folder, const char *source);

}  // namespace zqv
