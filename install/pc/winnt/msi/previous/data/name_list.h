#pragma once

#include <string>
#include <vector>

namespace zqv {

/// File names that an immediate pass hands to a deferred one, in properties that are called `property` and a number
/// from 1 to kNameProperties; a package lists them all for transfer. Each holds as many names as a deferred action can
/// read at once, parted by "|", which no name has. A "?", which none has either, stands for ";", which would end the
/// value. The first empty property ends the list.
inline constexpr int kNameProperties = 8;

/// False, with a line, when a property cannot be set or there are more names than the properties take.
[[nodiscard]] bool HandOverNames(const char *property, const std::vector<std::string> &names);

/// False when a property cannot be read. What is no plain file name is told and passed over.
[[nodiscard]] bool ReadHandedNames(const char *property, std::vector<std::string> &names);

}  // namespace zqv
