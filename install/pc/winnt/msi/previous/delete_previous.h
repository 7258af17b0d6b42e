#pragma once

#include <string>

#include "base/result_code.h"
#include "services/removal/deletion_guard.h"

namespace zqv {

/// The folders of an earlier version's program folder that are nobody else's.
inline constexpr const char *kProgramFolders[] = {"bin", "uninst", "doc"};

/// Finds the earlier version's program folder (ZQVPREVPGM), with a backslash at its end. Empty when there is none, when
/// it is the new one too, or when the guard lets nothing be deleted below it; the last two are told. The guard
/// bars the new one from then on. False when a property cannot be read.
[[nodiscard]] bool FindOtherProgramFolder(std::string &folder, DeletionGuard &guard);

/// iwiDeletePrevious: where the earlier version's program folder (ZQVPREVPGM) is another one than the new, stacks the
/// removal of its folders "bin", "uninst" and "doc" with all that is in them, and of itself, if it is empty then. One
/// of the three that is a folder of programs or data, or above one, is let be. Returns ERROR_SUCCESS, or
/// ERROR_INSTALL_FAILURE when a property cannot be read.
ResultCode DeletePrevious();

}  // namespace zqv
