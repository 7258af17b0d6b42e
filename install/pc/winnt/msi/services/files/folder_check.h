#pragma once

#include <string>

namespace zqv {

/// True for a folder that is valid by the rule of base/folder_rule.h; tells the other kind, with the name of what it
/// came from: a user's choice, a property, or a value of the registry. `folder` is tidied and not empty.
[[nodiscard]] bool JudgeFolder(const std::string &folder, const char *source);

}  // namespace zqv
