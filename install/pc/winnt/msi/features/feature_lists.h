#pragma once

#include <string_view>
#include <vector>

namespace zqv {

/// The installer's properties that choose features: lists of names with commas between them, or "ALL".
inline constexpr const char *kFeatureLists[] = {"ADDLOCAL",   "REMOVE",    "ADDSOURCE",
                                                "ADDDEFAULT", "REINSTALL", "ADVERTISE"};

/// The names in such a list, without the blanks around them; empty ones do not count. They are parts of `list`.
std::vector<std::string_view> NamesInList(std::string_view list);

/// True for "ALL", in any case, which stands for every feature.
bool IsAllFeatures(std::string_view name);

}  // namespace zqv
