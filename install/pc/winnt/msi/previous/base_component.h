#pragma once

namespace zqv {

/// The component that the removal of everything old is stacked for: it goes with the package's base feature.
inline constexpr char kBaseComponent[] = "Base_base";

}  // namespace zqv
