#include <string>

#include "init/primary/sections.h"
#include "runtime/property.h"
#include "services/files/copy.h"
#include "services/files/delete_entry.h"

namespace zqv {

bool SettleTempFolder(Facts & /*facts*/) {
  std::string folder;
  if (!GetTrimmedProperty("ZQVTEMP", folder)) {
    return false;
  }
  if (folder.empty() && (!GetTrimmedProperty("TempFolder", folder) || !SetProperty("ZQVTEMP", folder))) {
    return false;
  }
  ValueOf(Kept::tempFolder) = folder;
  return true;
}

bool RestartTempNumbers(Facts & /*facts*/) { return SetProperty("ZQVTEMPFILENUM", ""); }

bool DeleteCancelMarker(Facts & /*facts*/) {
  DeletionRequest marker;
  marker.execute = true;
  marker.path = ValueOf(Kept::tempFolder) + "\\" + kCancelMarker;
  // A file that cannot be deleted, which is logged, only keeps copies from being made.
  static_cast<void>(DeleteOneFile(marker));
  return true;
}

}  // namespace zqv
