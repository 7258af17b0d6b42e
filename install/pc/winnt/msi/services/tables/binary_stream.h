#pragma once

#include <string>

namespace zqv {

/// Writes a stream of the package's Binary table to a file. A row is meant when its name begins with `prefix` and then,
/// without a suffix (empty), ends or goes on with a dot; with one, goes on with `suffix`, whatever follows; letters'
/// case does not matter. What follows prefix, suffix and a dot in its name is the component suffix, which
/// `componentSuffix` gets if it is not null: empty when there is none.
///
/// Every row that is meant is written, each over the same file, so that the last one stays. False when there was none
/// or anything failed.
[[nodiscard]] bool iwiUnpackBinary(const std::string &prefix, const std::string &suffix, const std::string &path,
                                   std::string *componentSuffix);

}  // namespace zqv
