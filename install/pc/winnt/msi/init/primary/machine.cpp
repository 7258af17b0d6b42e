#include <string>

#include "features/answers/response_property.h"
#include "init/primary/sections.h"
#include "platform/owner.h"
#include "previous/previous_installation.h"
#include "runtime/log.h"
#include "runtime/message.h"
#include "runtime/property.h"
#include "services/files/copy.h"
#include "services/files/delete_entry.h"
#include "services/system/product_key.h"

namespace zqv {

namespace {

struct SupportPac {
  const char *checkSwitch;  ///< the property that asks for the check
  const char *key;          ///< below the key of the applied SupportPacs
  const char *title;        ///< as the log shows it
  UINT message;
};
constexpr SupportPac kSupportPacs[] = {
    {"ZQVCHECKMSCS", "\\MC74", "MC74 (MSCS support)", message::kClusterSupportPac},
    {"ZQVCHECKPUBSUB", "\\MA0C", "MA0C (Pub/Sub)", message::kPubSubSupportPac},
};

bool IsApplied(const SupportPac &pac) {
  const std::string path = std::string(kCurrentVersionKey) + "\\SupportPacs Applied" + pac.key;
  OwnedKey key;
  const LONG error = RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_QUERY_VALUE, key.Out());
  if (error != ERROR_SUCCESS && error != ERROR_FILE_NOT_FOUND) {
    Log("***Can't open key '%s' %d", path.c_str(), static_cast<int>(error));
  }
  return error == ERROR_SUCCESS;
}

}  // namespace

bool LogOperatingSystem(Facts & /*facts*/) {
  OSVERSIONINFOEXA system{};
  system.dwOSVersionInfoSize = sizeof system;
  if (GetVersionExA(reinterpret_cast<OSVERSIONINFOA *>(&system)) != FALSE) {
    Log("Windows version %d.%d.%d platform %d '%s'", static_cast<int>(system.dwMajorVersion),
        static_cast<int>(system.dwMinorVersion), static_cast<int>(system.dwBuildNumber),
        static_cast<int>(system.dwPlatformId), system.szCSDVersion);
    Log("Service pack %d.%d reserved 0x%4.4hx", system.wServicePackMajor, system.wServicePackMinor,
        static_cast<unsigned short>(system.wProductType));
  } else {
    Log("***GetVersionEx() failed (%d)", static_cast<int>(GetLastError()));
  }
  std::string productType;  // for the log only
  return GetProperty("MsiNTProductType", productType);
}

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

bool DeleteCancelMarker(Facts & /*facts*/) {
  DeletionRequest marker;
  marker.execute = true;
  marker.path = ValueOf(Kept::tempFolder) + "\\" + kCancelMarker;
  // A file that cannot be deleted, which is logged, only keeps copies from being made.
  static_cast<void>(DeleteOneFile(marker));
  return true;
}

bool CheckSupportPacs(Facts & /*facts*/) {
  for (const SupportPac &pac : kSupportPacs) {
    std::string asked;
    if (!GetPropertyWithResponse(pac.checkSwitch, asked)) {
      return false;
    }
    if (asked.empty()) {
      continue;
    }
    if (IsApplied(pac)) {
      Log("ServicePac %s is installed", pac.title);
      std::string text;
      if (iwiLoadNlsString(text, pac.message)) {
        iiiDisplayMsgBox(text, MB_ICONERROR);
      }
      return false;
    }
    Log("ServicePac %s is not installed", pac.title);
  }
  return true;
}

bool PublishMigration(Facts & /*facts*/) { return SetSwitch("ZQVMIGRATE", FindPreviousInstallation().exists); }

}  // namespace zqv
