#pragma once

namespace zqv {

/// Where the installed product keeps its settings, below HKEY_LOCAL_MACHINE.

inline constexpr char kProductKey[] = "Software\\Korvex\\QVSeries";
inline constexpr char kCurrentVersionKey[] = "Software\\Korvex\\QVSeries\\CurrentVersion";

}  // namespace zqv
