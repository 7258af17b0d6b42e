#pragma once

#include <string>

namespace zqv {

/// The maintenance that the registry records for an installed product: the value VRMF of its key "\CurrentVersion", and
/// below that the key "Maintenance Applied", where each value "Maint MODIFICATION.FIX" holds the backup folder of a
/// level and the value "Shipped" the level that the product came with.

struct ServiceLevel {
  struct Level {
    std::string modification;
    std::string fix;
  };

  Level installed;  ///< as VRMF tells; both fields empty where there is none
  Level shipped;    ///< this one and the two below are "0" and "0" for no level
  Level previous;
  Level latest;
  std::string rollbackFolder;  ///< the backup that belongs to the latest level; empty where there is none
};

/// Reads the record below HKEY_LOCAL_MACHINE and `rootKey`, which has no backslash at its end. A level counts only
/// while its backup folder holds the file "Valid.csd". Returns true when the record could be read, a missing key being
/// an empty one. Otherwise, after a line in the log, false with every text of `level` empty.
[[nodiscard]] bool ReadRegistryServiceLevel(const std::string &rootKey, ServiceLevel &level);

}  // namespace zqv
