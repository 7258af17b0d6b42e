#pragma once

namespace zqv {

/// Where the installed product keeps its settings, below HKEY_LOCAL_MACHINE.

inline constexpr char kProductKey[] = "Software\\Korvex\\QVSeries";
inline constexpr char kCurrentVersionKey[] = "Software\\Korvex\\QVSeries\\CurrentVersion";
inline constexpr char kComponentsKey[] = "Software\\Korvex\\QVSeries\\CurrentVersion\\Components";

// The values that tell its folders.
inline constexpr char kProgramFolderValue[] = "PgmFolder";
inline constexpr char kDataFolderValue[] = "DatFolder";
inline constexpr char kLogFolderValue[] = "LogFolder";

}  // namespace zqv
