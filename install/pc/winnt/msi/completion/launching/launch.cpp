#include "completion/launching/launch.h"

#include <string>

#include "base/in_order.h"
#include "base/path.h"
#include "base/yes_no.h"
#include "completion/launching/argument.h"
#include "features/answers/response_property.h"
#include "features/client_only.h"
#include "running/product_files.h"
#include "runtime/log.h"
#include "runtime/phase.h"
#include "runtime/property.h"
#include "runtime/user_interface.h"
#include "services/files/folder_check.h"
#include "services/system/process.h"

namespace zqv {

namespace {

constexpr char kMakesFolders[] = "ZQVMKDIR";

constexpr int kHidden = 0;
constexpr int kShown = 1;

constexpr DWORD kNoWait = 0;
constexpr DWORD kCertificatesWait = 90000;  // milliseconds

/// Where the file to launch is.
enum class Place {
  bin,            ///< in "bin" of the program folder
  programFolder,  ///< below the program folder
  property,       ///< where the property of the given name says
};

/// Why something is not launched, as sums of these.
enum Obstacle : unsigned {
  kSilent = 1,
  kDialogs = 2,
  kClient = 4,
  kRemoval = 8,
  kDeclined = 16,
};
constexpr unsigned kUsual = kSilent | kDialogs;
constexpr unsigned kUsualOfServer = kUsual | kClient;

bool AskParameterFile(std::string &path) { return GetPropertyWithResponse("WIZPARMFILE", path); }

struct Row {
  Launched which;
  Place place;
  const char *name;
  unsigned obstacles;
  int show;
  DWORD timeout = kNoWait;                            ///< in milliseconds
  bool (*askArgument)(std::string &value) = nullptr;  ///< of the one argument; null: none
};

constexpr Row kLaunches[] = {
    {Launched::wizard, Place::bin, "zqvmjpse.exe", kUsualOfServer | kDeclined, kShown, kNoWait, AskParameterFile},
    {Launched::certificates, Place::bin, "zqvtcert.exe", kUsualOfServer, kHidden, kCertificatesWait},
    {Launched::launchPad, Place::bin, "zqvlpad.exe", kUsual, kShown},
    {Launched::readme, Place::property, "ARPREADME", kUsual, kShown},
    {Launched::sslInformation, Place::programFolder, "doc\\sslinfo.htm", kUsualOfServer, kShown},
    {Launched::sslWizard, Place::bin, "zqvsslwz.exe", kUsualOfServer, kShown},
    {Launched::setqvscp, Place::bin, "setqvscp.exe", kUsualOfServer, kShown},
    {Launched::dataFolders, Place::bin, "zqvmkdir.exe", kClient | kRemoval, kHidden, INFINITE},
};

static_assert(InOrder<&Row::which>(kLaunches));

constexpr const Row &RowOf(Launched which) { return kLaunches[static_cast<std::size_t>(which)]; }
constexpr const Row &kMakeFolders = RowOf(Launched::dataFolders);

bool AskOne(const char *property, bool &isOne) {
  std::string value;
  const bool read = GetProperty(property, value);
  isOne = value == "1";
  return read;
}

bool AskDeclined(bool &declined) {
  std::string value;
  const bool read = GetPropertyWithResponse("LAUNCHWIZ", value);
  declined = IsNo(value);
  return read;
}

struct Question {
  Obstacle obstacle;
  bool (*ask)(bool &holds);  ///< false: it cannot be found out
  const char *reason;
};
constexpr Question kQuestions[] = {
    {kSilent, AskSilent, "Silent installation"},
    {kDialogs, [](bool &holds) { return AskOne("ZQVENDUI", holds); }, "Left to the dialogs"},
    {kRemoval, [](bool &holds) { return AskOne("ZQVREMOVE", holds); }, "All of the product is removed"},
    {kClient, IsClientOnly, "Client-only installation"},
    {kDeclined, AskDeclined, "Not wanted"}};

bool FindPath(const Row &row, std::string &path) {
  switch (row.place) {
    case Place::bin:
      return ProductFile(row.name, path);
    case Place::programFolder:
      if (!GetKeptProperty(Kept::programFolder)) {
        return false;
      }
      path = ValueOf(Kept::programFolder) + "\\" + row.name;
      return true;
    case Place::property:
      break;
  }
  return GetTrimmedProperty(row.name, path, kLongLength);
}

/// Asks whether something is in the way of the launch, and says what. False when that cannot be found out.
bool AskWhetherLaunched(const Row &row, const std::string &path, bool &launched) {
  launched = !path.empty();
  if (!launched) {
    Log("No value in '%s'; nothing is launched", row.name);
    return true;
  }
  for (const Question &question : kQuestions) {
    bool holds = false;
    if ((row.obstacles & question.obstacle) != 0 && !question.ask(holds)) {
      return false;
    }
    if (holds) {
      Log("%s; '%s' is not launched", question.reason, path.c_str());
      launched = false;
      return true;
    }
  }
  return true;
}

bool MayRun(const Row &row, const std::string &path) {
  return row.place == Place::property ? IsAbsoluteFolder(SplitAtLastBackslash(path).folder) : MayRunPrograms();
}

/// Gives the exit code; kNoExitCode where none is known, as of what is not waited for.
DWORD Run(const Row &row, const std::string &path, const std::string &parameters) {
  DWORD exitCode = kNoExitCode;
  if (!MayRun(row, path)) {
    Log("***'%s' is in no absolute folder; it is not launched", path.c_str());
  } else if (row.timeout == kNoWait) {
    static_cast<void>(iwiLaunch(path, parameters, "", row.show, nullptr));
  } else {
    static_cast<void>(iwiLaunchAndWait(path, parameters, "", row.show, &exitCode, row.timeout));
  }
  return exitCode;
}

ResultCode CarryOut(const Row &row) {
  std::string path;
  bool launched = false;
  if (!FindPath(row, path) || !AskWhetherLaunched(row, path, launched)) {
    return ERROR_INSTALL_FAILURE;
  }
  std::string argument;
  if (launched && row.askArgument != nullptr && !row.askArgument(argument)) {
    return ERROR_INSTALL_FAILURE;
  }
  argument = Trimmed(argument);
  if (launched) {
    Run(row, path, argument.empty() ? argument : QuotedArgument(argument));
  }
  return ERROR_SUCCESS;
}

ResultCode PlanFolders() {
  std::string path;
  bool planned = false;
  return ResultOf(FindPath(kMakeFolders, path) && AskWhetherLaunched(kMakeFolders, path, planned) &&
                  SetSwitch(kMakesFolders, planned));
}

ResultCode MakeFolders() {
  bool planned = false;
  if (!AskOne(kMakesFolders, planned)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (!planned) {
    LogLine("No data folders to make");
    return ERROR_SUCCESS;
  }
  const char *const source = NameOf(Kept::dataFolder);
  std::string path;
  std::string folder;
  if (!FindPath(kMakeFolders, path) || !GetFolderProperty(source, folder) || !JudgeFolder(folder, source)) {
    return ERROR_INSTALL_FAILURE;
  }
  const DWORD exitCode = Run(kMakeFolders, path, QuotedArgument(folder));
  if (exitCode != 0) {
    Log("***'%s' ended with %d", path.c_str(), static_cast<int>(exitCode));
  }
  return ResultOf(exitCode == 0);
}

}  // namespace

ResultCode Launch(Launched which) { return CarryOut(RowOf(which)); }

ResultCode LaunchWizard() {
  UseDataFolderLog();
  return Launch(Launched::wizard);
}

ResultCode SetLaunchWizard() {
  bool declined = false;
  bool isClient = false;
  return ResultOf(AskDeclined(declined) && IsClientOnly(isClient) &&
                  SetProperty("LAUNCHWIZ", declined || isClient ? "0" : "1"));
}

ResultCode MakeDataFolders() {
  switch (AnnouncePhase()) {
    case Phase::scriptGeneration:
      return PlanFolders();
    case Phase::deferred:
      return MakeFolders();
    case Phase::rollback:
    case Phase::commit:
      break;
  }
  return ERROR_SUCCESS;
}

}  // namespace zqv
