#include "side/zekit.h"

#include <optional>
#include <string>

#include "base/path.h"
#include "runtime/log.h"
#include "runtime/phase.h"
#include "runtime/progress.h"
#include "runtime/property.h"
#include "services/files/source_path.h"
#include "services/system/process.h"
#include "services/system/product_key.h"
#include "services/system/registry.h"
#include "side/source.h"

namespace zqv {

namespace {

constexpr char kAvailable[] = "ZQVZEKITAVAILABLE";
constexpr char kInstalled[] = "ZQVZEKITINSTALLED";
constexpr char kSetup[] = "ZQVZEKITSETUP";

constexpr char kInstallSilently[] = "/s";
constexpr char kUninstall[] = "/u";
constexpr int kHidden = 0;
constexpr DWORD kRestartWanted = 3010;  // ERROR_SUCCESS_REBOOT_REQUIRED

/// Of the package's File and Directory tables.
constexpr char kFileKey[] = "zekit";
constexpr char kFileFolder[] = "TARGETDIR";

bool IsInstalled() {
  std::optional<RegistryValueData> version;
  return ReadRegistryValue(nullptr, kZekitKey, "Version", version) && version.has_value();
}

ResultCode Plan() {
  std::string installed;
  std::string available;
  if (!GetProperty(kInstalled, installed) || !GetProperty(kAvailable, available)) {
    return ERROR_INSTALL_FAILURE;
  }
  std::string setup;
  if (!installed.empty()) {
    LogLine("Zekit is installed already");
  } else if (available.empty()) {
    LogLine("Zekit is not available");
  } else {
    ResultCode result = ERROR_SUCCESS;
    const bool found = iwiGetSourceFilePath(kFileKey, kFileFolder, setup, result);
    if (!found || !IsForEveryone(setup)) {
      Log("***No setup of Zekit to run: '%s'", setup.c_str());
      return ERROR_INSTALL_FAILURE;
    }
    AnnounceTicks(kTicksPerUnit);
  }
  return ResultOf(SetProperty(kSetup, setup));
}

/// Runs the setup. Its exit code, or what the launch gave: where the exit code is not known, too.
DWORD RunSetup(const std::string &setup, const char *parameter) {
  DWORD exitCode = kNoExitCode;
  const ResultCode launched = iwiLaunchAndWait(setup, parameter, "", kHidden, &exitCode, INFINITE);
  return launched == ERROR_SUCCESS ? exitCode : launched;
}

ResultCode Install(const std::string &setup) {
  const DWORD ended = RunSetup(setup, kInstallSilently);
  SendProgress(0, kTicksPerUnit);
  if (ended == kRestartWanted) {
    LogLine("Zekit is installed; it wants a restart");
  } else if (ended != ERROR_SUCCESS) {
    Log("***Zekit setup ended with %d", static_cast<int>(ended));
    return ERROR_INSTALL_FAILURE;
  }
  return ERROR_SUCCESS;
}

/// What was not installed before the installation and is now.
ResultCode Uninstall(const std::string &setup) {
  if (!IsInstalled()) {
    LogLine("Zekit is not installed");
    return ERROR_SUCCESS;
  }
  const DWORD ended = RunSetup(setup, kUninstall);
  if (ended != ERROR_SUCCESS && ended != kRestartWanted) {
    Log("***Zekit setup ended with %d", static_cast<int>(ended));
    return ERROR_INSTALL_FAILURE;
  }
  return ERROR_SUCCESS;
}

}  // namespace

ResultCode CheckZekit() {
  std::string setup;
  ResultCode result = ERROR_SUCCESS;
  const bool available = iwiGetSourceFilePath(kFileKey, kFileFolder, setup, result);
  return ResultOf(SetSwitch(kAvailable, available) && SetSwitch(kInstalled, IsInstalled()));
}

ResultCode InstallZekit() {
  const Phase phase = AnnouncePhase();
  if (phase == Phase::scriptGeneration) {
    return Plan();
  }
  std::string setup;
  if (!GetTrimmedProperty(kSetup, setup)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (!IsAbsoluteFolder(setup)) {
    LogLine("No setup of Zekit to run");
    return ERROR_SUCCESS;
  }
  return phase == Phase::rollback ? Uninstall(setup) : Install(setup);
}

}  // namespace zqv
