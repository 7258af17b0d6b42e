#include "side/registration.h"

#include <string>

#include "base/in_order.h"
#include "completion/launching/argument.h"
#include "features/feature_table.h"
#include "running/product_files.h"
#include "runtime/log.h"
#include "runtime/phase.h"
#include "runtime/progress.h"
#include "runtime/property.h"
#include "services/files/existence.h"
#include "services/system/process.h"
#include "services/tables/feature_state.h"

namespace zqv {

namespace {

constexpr char kCounters[] = "ZQVPERFMON";
constexpr int kHidden = 0;
constexpr DWORD kWait = 90000;  // milliseconds

/// Where the program is, and what decides whether it runs.
enum class Place {
  product,  ///< in "bin" of the program folder
  system,   ///< in the system's folder; only for counters that are wanted
};

struct Row {
  Registration which;
  Place place;
  const char *program;
  const char *parameters;  ///< null: the path of kCounterFile, quoted
  bool plans;              ///< in the immediate pass; where not, another action does
};

constexpr char kCounterFile[] = "zqvmperf.ini";  // in "bin"

constexpr Row kRegistrations[] = {
    {Registration::addDotNet, Place::product, "zqvregnet.exe", "-i", true},
    {Registration::deleteDotNet, Place::product, "zqvregnet.exe", "-u", true},
    {Registration::addCounters, Place::system, "lodctr.exe", nullptr, false},
    {Registration::deleteCounters, Place::system, "unlodctr.exe", "QVSeries", true},
};

static_assert(InOrder<&Row::which>(kRegistrations));

/// Finds the program of the system. False, with a line, when its folder cannot be found out.
bool SystemFile(const char *name, std::string &path) {
  char folder[MAX_PATH] = "";
  const UINT length = GetSystemDirectoryA(folder, MAX_PATH);
  if (length == 0 || length >= MAX_PATH) {
    Log("***Error %d finding the system's folder", static_cast<int>(GetLastError()));
    return false;
  }
  path = std::string(folder) + "\\" + name;
  return true;
}

bool AskWanted(const Row &row, bool &wanted) {
  wanted = true;
  if (row.place == Place::system) {
    std::string value;
    if (!GetProperty(kCounters, value)) {
      return false;
    }
    wanted = value == "1";
  }
  return true;
}

void Run(const std::string &path, const std::string &parameters) {
  DWORD exitCode = kNoExitCode;
  const ResultCode launched = iwiLaunchAndWait(path, parameters, "", kHidden, &exitCode, kWait);
  if (launched == ERROR_SUCCESS && exitCode != 0) {
    Log("***'%s' ended with %d", path.c_str(), static_cast<int>(exitCode));
  }
}

bool RunOfProduct(const Row &row) {
  std::string path;
  if (!ProductFile(row.program, path)) {
    return false;
  }
  if (!MayRunPrograms()) {
    Log("***'%s' is in no absolute folder; it is not launched", path.c_str());
  } else if (!iwiFileExists(path)) {
    Log("'%s' is not there; nothing is registered", path.c_str());
  } else {
    Run(path, row.parameters);
  }
  return true;
}

bool RunOfSystem(const Row &row) {
  std::string path;
  std::string counters;
  if (row.parameters == nullptr && !ProductFile(kCounterFile, counters)) {
    return false;
  }
  if (SystemFile(row.program, path)) {
    Run(path, row.parameters != nullptr ? row.parameters : QuotedArgument(counters));
  }
  return true;
}

}  // namespace

ResultCode Register(Registration which) {
  const Row &row = kRegistrations[static_cast<std::size_t>(which)];
  const Phase phase = AnnouncePhase();
  bool wanted = false;
  if (!AskWanted(row, wanted)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (!wanted) {
    LogLine("No performance counters");
    return ERROR_SUCCESS;
  }
  if (phase == Phase::scriptGeneration) {
    if (row.plans) {
      AnnounceTicks(kTicksPerUnit);
    }
    return ERROR_SUCCESS;
  }
  const bool good = row.place == Place::product ? RunOfProduct(row) : RunOfSystem(row);
  SendProgress(0, kTicksPerUnit);
  return ResultOf(good);
}

ResultCode PlanCounters() {
  bool wanted = false;
  if (!AskWhetherStaysLocal(NameOf(Feature::Server), wanted)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (wanted) {
    AnnounceTicks(kTicksPerUnit);
  }
  return ResultOf(SetSwitch(kCounters, wanted));
}

}  // namespace zqv
