#include <string>

#include "init/primary/sections.h"
#include "runtime/log.h"
#include "runtime/property.h"

namespace zqv {

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

}  // namespace zqv
