#pragma once

#include <string>

#include "base/load_state.h"

namespace zqv {

/// Properties that name folders: each row of the RemoveFile table names its folder by such a property.

extern LoadStateEntry &pathPropertyState;

/// Gives `nameOut` the name of a property that holds `path`: one made before in this load, found without regard to
/// case, or a new one, numbered by ZQVPROPERTYCOUNTER. False when it cannot be had: then no row may name the property,
/// which may become another folder's. So the counter's largest number, which has none behind it, is never given.
[[nodiscard]] bool GetPathProperty(const std::string &path, std::string &nameOut);

}  // namespace zqv
