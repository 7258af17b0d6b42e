#pragma once

namespace zqv {

/// Checks that the properties that choose features (ADDLOCAL, REMOVE and their like), from the command line or the
/// response file, name none that the package lacks. A list has commas between its names, whose case matters, and may
/// hold "ALL" in any case. Each list with unknown names is shown in an error message. False when a name is
/// unknown, and at once when a property or the Feature table cannot be read.
[[nodiscard]] bool ValidateFeatureLists();

}  // namespace zqv
