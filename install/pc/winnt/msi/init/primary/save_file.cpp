#include "init/primary/save_file.h"

#include <string>

#include "base/code_page.h"
#include "base/path.h"
#include "init/primary/sections.h"
#include "platform/owner.h"
#include "runtime/message.h"
#include "runtime/property.h"
#include "services/files/create.h"
#include "services/files/delete_entry.h"

namespace zqv {

namespace {

constexpr DWORD kOnlyIniLength = 64;
constexpr char kSaveFileProperty[] = "SAVEINI";

/// Creates the file anew, empty. Returns the system's error, ERROR_SUCCESS for none.
int MakeEmptyFile(const std::string &path) {
  const OwnedFile file(
      CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  return file ? static_cast<int>(ERROR_SUCCESS) : static_cast<int>(GetLastError());
}

std::string DefaultPath() { return ValueOf(Kept::tempFolder) + "\\QVSeries.ini"; }

}  // namespace

bool DefaultSaveFile(Facts & /*facts*/) {
  std::string onlyIni;  // for the log only
  std::string path;
  if (!GetProperty("ONLYINI", onlyIni, kOnlyIniLength) || !GetProperty(kSaveFileProperty, path)) {
    return false;
  }
  return !path.empty() || SetProperty(kSaveFileProperty, DefaultPath());
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

bool DeleteDefaultSaveFile() {
  std::string path;
  if (!GetKeptProperty(Kept::tempFolder) || !GetTrimmedProperty(kSaveFileProperty, path)) {
    return false;
  }
  if (IsAbsoluteFolder(ValueOf(Kept::tempFolder)) && EqualName(path, DefaultPath())) {
    static_cast<void>(DeleteOneFile({.execute = true, .path = path}));
  }
  return true;
}

}  // namespace zqv
