#include <string>

#include "base/path.h"
#include "base/text.h"
#include "base/yes_no.h"
#include "features/answers/response_property.h"
#include "init/primary/sections.h"
#include "platform/msi.h"
#include "platform/owner.h"
#include "previous/previous_installation.h"
#include "running/file_in_use.h"
#include "running/service.h"
#include "runtime/message.h"
#include "runtime/property.h"
#include "runtime/session.h"
#include "services/files/create.h"
#include "services/files/existence.h"

namespace zqv {

namespace {

constexpr DWORD kOnlyIniLength = 64;
constexpr char kSaveFileProperty[] = "SAVEINI";
constexpr char kTaskbarProgram[] = "zqvmtbrn.exe";

/// Creates the file anew, empty. Returns the system's error, ERROR_SUCCESS for none.
int MakeEmptyFile(const std::string &path) {
  const OwnedFile file(
      CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  return file ? static_cast<int>(ERROR_SUCCESS) : static_cast<int>(GetLastError());
}

bool ServiceRuns() {
  return (iwiServiceExists(kFirstService) || iwiServiceExists(kSecondService)) &&
         (iwiIsServiceActive(kFirstService) || iwiIsServiceActive(kSecondService));
}

bool TaskbarProgramRuns() {
  const std::string &folder = FindPreviousInstallation().programFolder;
  if (folder.empty()) {
    return false;
  }
  const std::string program = folder + "\\bin\\" + kTaskbarProgram;
  return iwiFileExists(program) && iwiIsFileInUse(program);
}

/// Whether something is to be started at the end: as the user has said, else when it runs now. Never for a client or in
/// an administrative installation.
bool PublishStart(Facts &facts, const char *published, const char *choice, bool (*runs)()) {
  bool clientOnly = false;
  if (!facts.administrative && !AskClientOnly(facts, clientOnly)) {
    return false;
  }
  if (facts.administrative || clientOnly) {
    return SetSwitch(published, false);
  }
  std::string chosen;
  if (!GetProperty(choice, chosen)) {
    return false;
  }
  return SetSwitch(published, chosen.empty() ? runs() : !IsNo(chosen));
}

}  // namespace

bool PublishUserChoice(Facts & /*facts*/) {
  std::string choice;
  if (!GetPropertyWithResponse("USERCHOICE", choice)) {
    return false;
  }
  return SetSwitch("ZQVUSERCHOICE", !IsNo(choice));
}

bool DefaultSaveFile(Facts & /*facts*/) {
  std::string onlyIni;  // for the log only
  std::string path;
  if (!GetProperty("ONLYINI", onlyIni, kOnlyIniLength) || !GetProperty(kSaveFileProperty, path)) {
    return false;
  }
  return !path.empty() || SetProperty(kSaveFileProperty, ValueOf(Kept::tempFolder) + "\\QVSeries.ini");
}

bool SettleInstallationKind(Facts &facts) {
  facts.administrative = InRunMode(MSIRUNMODE_ADMIN);
  return SetProperty("ALLUSERS", "1");
}

bool PublishDataRetention(Facts & /*facts*/) {
  std::string queueManagers;
  std::string web;
  if (!GetPropertyWithResponse("KEEPQMDATA", queueManagers)) {
    return false;
  }
  const char *fate = EqualNoCase(queueManagers, "delete") ? "delete" : "keep";
  if (!SetProperties({{"ZQVLEAVEQMDATAINSTALL", fate}, {"ZQVLEAVEQMDATAREMOVE", fate}}) ||
      !GetProperty("KEEPWEBDATA", web)) {
    return false;
  }
  // Deliberate: here the letters' case matters.
  return SetProperty("ZQVLEAVEWEBDATAINSTALL", web == "delete" ? "delete" : "keep");
}

bool ResetDialogFlags(Facts &facts) {
  if (facts.administrative) {
    return true;
  }
  return SetProperties({{"ZQVREINSTALLOPTIONS", "refresh"},
                        {"ZQVQVISRUNNING", ""},
                        {"ZQVPERFMONISRUNNING", ""},
                        {"ZQVPRODUCTPREREQ", "0"},
                        {"ZQVENDUI", "0"}});
}

bool MakeSaveFile(Facts &facts) {
  if (facts.administrative) {
    return true;
  }
  std::string path;
  if (!GetTrimmedProperty(kSaveFileProperty, path)) {
    return false;
  }
  iwiCreateFolderTree(std::string(SplitAtLastBackslash(path).folder) + "\\");
  const int error = MakeEmptyFile(path);
  std::string format;
  if (error != ERROR_SUCCESS && iwiLoadNlsString(format, message::kSaveFileFailed)) {
    iiiDisplayMsgBox(FillInsert(format, "%d", std::to_string(error)), MB_ICONERROR);
  }
  return true;
}

bool CheckParameterFile(Facts & /*facts*/) {
  std::string path;
  if (!GetPropertyWithResponse("WIZPARMFILE", path)) {
    return false;
  }
  if (path.empty() || iwiFileExists(iwiTidyPath(kWithoutBackslash, path))) {
    return true;
  }
  const std::string format = NlsText(message::kResponseFileUnreadable, "Can't open file '%s'. (ZQV4734)");
  iiiDisplayMsgBox(FillInsert(format, "%1", path), MB_ICONERROR);
  return false;
}

bool PublishServiceStart(Facts &facts) { return PublishStart(facts, "ZQVSTARTSERVICE", "STARTSERVICE", ServiceRuns); }

bool PublishTaskbarStart(Facts &facts) {
  return PublishStart(facts, "ZQVSTARTTASKBAR", "STARTTASKBAR", TaskbarProgramRuns);
}

}  // namespace zqv
