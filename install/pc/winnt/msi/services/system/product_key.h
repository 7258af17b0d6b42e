#pragma once

namespace zqv {

/// Where the installed product keeps its settings, below HKEY_LOCAL_MACHINE.

inline constexpr char kProductKey[] = "Software\\Korvex\\QVSeries";
inline constexpr char kCurrentVersionKey[] = "Software\\Korvex\\QVSeries\\CurrentVersion";
inline constexpr char kComponentsKey[] = "Software\\Korvex\\QVSeries\\CurrentVersion\\Components";

/// The security toolkit that it needs: the value "Version" is there while that is installed.
inline constexpr char kZekitKey[] = "Software\\Korvex\\QVSeries\\CurrentVersion\\Zekit";

/// Its maintenance: a value "Maint" and a level holds the backup folder of what has been applied.
inline constexpr char kMaintenanceKey[] = "Software\\Korvex\\QVSeries\\CurrentVersion\\Maintenance Applied";
inline constexpr char kMaintenanceMarker[] = "Maint";

// The values that tell its level, its display, and its folders.
inline constexpr char kVrmfValue[] = "VRMF";
inline constexpr char kHighContrastValue[] = "HighContrastMode";
inline constexpr char kProgramFolderValue[] = "PgmFolder";
inline constexpr char kDataFolderValue[] = "DatFolder";
inline constexpr char kLogFolderValue[] = "LogFolder";

}  // namespace zqv
