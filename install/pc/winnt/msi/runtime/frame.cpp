#include "runtime/frame.h"

#include <exception>

#include "base/module_file.h"
#include "base/path.h"
#include "base/text.h"
#include "build_stamp.h"
#include "platform/owner.h"
#include "runtime/copy_cancel.h"
#include "runtime/log.h"
#include "runtime/message.h"
#include "runtime/property.h"
#include "runtime/session.h"

namespace zqv {

namespace {

constexpr char kMutexName[] = "ZQV_QVSeriesInstallation";
constexpr char kExternalFolder[] = "ZQVEXTCA60000";
constexpr DWORD kUserNameLength = 516;

struct RunMode {
  MSIRUNMODE mode;
  const char *name;
};
constexpr RunMode kLoggedRunModes[] = {
    {MSIRUNMODE_SCHEDULED, "MSIRUNMODE_SCHEDULED"},
    {MSIRUNMODE_COMMIT, "MSIRUNMODE_COMMIT"},
    {MSIRUNMODE_ROLLBACK, "MSIRUNMODE_ROLLBACK"},
    {MSIRUNMODE_REBOOTNOW, "MSIRUNMODE_REBOOTNOW"},
    {MSIRUNMODE_REBOOTATEND, "MSIRUNMODE_REBOOTATEND"},
    {MSIRUNMODE_OPERATIONS, "MSIRUNMODE_OPERATIONS"},
    {MSIRUNMODE_LOGENABLED, "MSIRUNMODE_LOGENABLED"},
    {MSIRUNMODE_ROLLBACKENABLED, "MSIRUNMODE_ROLLBACKENABLED"},
    {MSIRUNMODE_MAINTENANCE, "MSIRUNMODE_MAINTENANCE"},
    {MSIRUNMODE_ADVERTISE, "MSIRUNMODE_ADVERTISE"},
    {MSIRUNMODE_ADMIN, "MSIRUNMODE_ADMIN"},
};

using EntryPoint = UINT(__stdcall *)(MSIHANDLE);

/// "MODULE Built on DATE at TIME", with "; version VERSION" only if three blanks are found in the identification.
std::string MakeBanner() {
  std::string identification = kIdentification;
  std::string version;
  int blanks = 0;
  // Deliberate: each search starts at the text's beginning, which the first one has cut at its blank. So the second
  // never finds one, and the banner never names a version.
  for (std::size_t at = identification.find(' '); at != std::string::npos; at = identification.find(' ')) {
    version = identification.substr(at + 1);
    identification.resize(at);
    ++blanks;
  }
  if (blanks < 3) {
    return Format("%s Built on %s at %s", kModuleName, kBuildDate, kBuildTime);
  }
  return Format("%s Built on %s at %s; version %s", kModuleName, kBuildDate, kBuildTime, version.c_str());
}

struct State {
  std::string banner = MakeBanner();
  OwnedKernelHandle installationMutex;
  OwnedModule externalLibrary;

  void Abandon() {
    installationMutex.Release();
    externalLibrary.Release();
  }
};
constinit LoadState<State> state;

/// Finds the action in a second copy of the library. Null when the action is to run here.
EntryPoint FindExternalAction(const std::string &folder, const char *actionName, std::string &path) {
  path = Format(EndsInBackslash(folder) ? "%s%s" : "%s\\%s", folder.c_str(), kModuleName);

  SetLastError(0);
  state->installationMutex.Reset(CreateMutexA(nullptr, FALSE, kMutexName));
  const int mutexError = static_cast<int>(GetLastError());
  if (!state->installationMutex) {
    Log("Can't create mutex %d", mutexError);
    return nullptr;
  }
  if (mutexError == ERROR_ALREADY_EXISTS) {
    Log("External invocation of '%s'", kModuleName);
    return nullptr;
  }
  CaLogRunModes(Session().handle);

  state->externalLibrary = LoadModuleFile(path, LOAD_WITH_ALTERED_SEARCH_PATH);
  if (!state->externalLibrary) {
    const int error = static_cast<int>(GetLastError());
    if (error == ERROR_MOD_NOT_FOUND) {
      Log("Can't find '%s'", path.c_str());
    } else {
      Log("LoadLibraryEx(%s) failed %d.", path.c_str(), error);
    }
    return nullptr;
  }
  const FARPROC found = GetProcAddress(state->externalLibrary.Get(), actionName);
  if (found == nullptr) {
    const int error = static_cast<int>(GetLastError());
    if (error == ERROR_PROC_NOT_FOUND) {
      Log("Can't find proc '%s(%s)'", path.c_str(), actionName);
    } else {
      Log("***Unable to get proc '%s(%s)'; code %d.", path.c_str(), actionName, error);
    }
  }
  return reinterpret_cast<EntryPoint>(reinterpret_cast<void *>(found));
}

void EnterNesting(const char *actionName) {
  SessionState &session = Session();
  if (session.topLevelAction.empty()) {
    if (session.depth != 0) {
      Log("Invalid depth count entering '%s': %d", actionName, session.depth);
    }
    session.depth = 1;
    session.topLevelAction = actionName;
    session.nestedAction.clear();
    return;
  }
  if (session.depth < 1) {
    Log("Invalid depth count entering '%s' from '%s': %d", actionName, session.topLevelAction.c_str(), session.depth);
    session.depth = 1;
  }
  ++session.depth;
  session.nestedAction = actionName;
}

/// False, with the line and the result that the guard's form asks for, when the running mode is a forbidden one.
bool GuardAllows(const RunModeGuard &guard, ResultCode &result) {
  if (guard.form == RunModeGuard::none) {
    return true;
  }
  for (const auto &[mode, name] : guard.forbidden) {
    if (name == nullptr || !InRunMode(mode)) {
      continue;
    }
    if (guard.form == RunModeGuard::error) {
      Log("***CA execute error; run mode must not be '%s'.", name);
      result = ERROR_INSTALL_FAILURE;
    } else {
      Log("CA bypassed; run mode must not be '%s'.", name);
    }
    return false;
  }
  return true;
}

/// Without memory for the line, there is none.
void LogException(const Action &action, const char *what) noexcept {
  try {
    Log("***Action '%s' ended by an exception: %s", action.name, what);
  } catch (...) {
  }
}

/// Takes a step of the action. False when it has thrown: that is logged, and the result is a failure.
template <typename Step>
bool Take(const Action &action, ResultCode &result, Step step) noexcept {
  try {
    step();
    return true;
  } catch (const std::exception &exception) {
    LogException(action, exception.what());
  } catch (...) {
    LogException(action, "of an unknown kind");
  }
  result = ERROR_INSTALL_FAILURE;
  return false;
}

void ShowFailure() {
  std::string text;
  if (iwiLoadNlsString(text, message::kActionFailed)) {
    iiiDisplayMsgBox(text, MB_ICONERROR);
  }
}

}  // namespace

constinit LoadStateEntry &frameState = state;

const std::string &BuildBanner() { return state->banner; }

ResultCode RunAction(const Action &action, MSIHANDLE hInstall) noexcept {
  ResultCode result = action.initialResult;
  Take(action, result, [&] {
    if (!CaProlog(hInstall, &result, action.name, BuildBanner()) && GuardAllows(action.guard, result) &&
        action.body != nullptr) {
      result = action.body();
    }
  });
  return CaEpilog(action, result);
}

bool CaProlog(MSIHANDLE hInstall, ResultCode *rcOut, const char *actionName, const std::string &banner) {
  ForgetRunModes();
  SessionState &session = Session();
  if (session.topLevelAction.empty()) {
    session.handle = hInstall;
    session.messageShown = false;
    LogLine(banner);

    std::string folder;
    // The product's name is only for the log. Deliberate: when either cannot be read, the body runs without the nesting
    // step, so that the depth ends below zero and the next action reports it.
    if (!GetProperty("ProductName", folder) || !GetProperty(kExternalFolder, folder)) {
      return false;
    }
    if (folder.empty()) {
      CaLogRunModes(hInstall);
    } else {
      std::string path;
      const EntryPoint external = FindExternalAction(folder, actionName, path);
      if (external != nullptr) {
        Log("Executing '%s(%s)'", path.c_str(), actionName);
        *rcOut = external(hInstall);
        return true;
      }
    }
  }
  EnterNesting(actionName);
  return false;
}

ResultCode CaEpilog(const Action &action, ResultCode rc) noexcept {
  SessionState &session = Session();
  --session.depth;
  const bool outermost = session.depth < 1;
  if (state->externalLibrary) {
    state->externalLibrary.Reset();
  } else if (outermost && !session.messageShown && rc == ERROR_INSTALL_FAILURE) {
    Take(action, rc, ShowFailure);
  }
  if (outermost) {
    Take(action, rc, FreeMessageLibrary);
    state->installationMutex.Reset();
  }
  ResultCode result = copyCancelled != FALSE && rc == ERROR_SUCCESS ? ERROR_INSTALL_USEREXIT : rc;
  const auto tell = [&] { Log("Returning with rc %d", result); };
  if (!Take(action, result, tell)) {
    Take(action, result, tell);
  }
  session.nestedAction.clear();
  ForgetRunModes();
  return result;
}

void CaLogRunModes(MSIHANDLE /*hInstall*/) {
  char user[kUserNameLength];
  DWORD length = kUserNameLength;
  if (GetUserNameA(user, &length) != FALSE) {
    Log("User name is '%s'", user);
  } else {
    Log("Can't get user name %d", static_cast<int>(GetLastError()));
  }
  for (const RunMode &runMode : kLoggedRunModes) {
    if (InRunMode(runMode.mode)) {
      LogLine(runMode.name);
    }
  }
}

}  // namespace zqv
