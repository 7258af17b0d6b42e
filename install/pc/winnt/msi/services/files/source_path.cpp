#include "services/files/source_path.h"

#include "base/code_page.h"
#include "base/text.h"
#include "platform/owner.h"
#include "runtime/log.h"
#include "runtime/property_source.h"
#include "runtime/session.h"
#include "runtime/table_query.h"
#include "services/files/existence.h"

namespace zqv {

namespace {

/// Logs a failing call; true when `code` is a success.
bool Check(const char *call, ResultCode code, const std::string &query) {
  if (code != ERROR_SUCCESS) {
    Log("***%s error %d. Query '%s'", call, code, query.c_str());
  }
  return code == ERROR_SUCCESS;
}

/// The file's long name.
bool FindFileName(const std::string &file, std::string &name) {
  const OwnedInstallerHandle database(MsiGetActiveDatabase(Session().handle));
  if (!database) {
    Log("***MsiGetActiveDatabase() failed");
    return false;
  }
  const std::string query = Format("SELECT FileName FROM File WHERE File='%s'", file.c_str());
  OwnedInstallerHandle view;
  OwnedInstallerHandle row;
  if (!Check("MsiDatabaseOpenView()", MsiDatabaseOpenViewA(database.Get(), query.c_str(), view.Out()), query) ||
      !Check("MsiViewExecute()", MsiViewExecute(view.Get(), 0), query) ||
      !Check("MsiViewFetch()", MsiViewFetch(view.Get(), row.Out()), query) ||
      !Check("MsiRecordGetString(1)", ReadRecordText(row.Get(), 1, name), query)) {
    return false;
  }
  const std::size_t bar = FindCharacter(name, '|');
  if (bar != std::string::npos) {
    name.erase(0, bar + 1);
  }
  return true;
}

}  // namespace

bool FindSourceFolder(const std::string &folder, std::string &path) {
  char source[kPropertyLength];
  DWORD length = kPropertyLength;
  const ResultCode code = MsiGetSourcePathA(Session().handle, folder.c_str(), source, &length);
  path = code == ERROR_SUCCESS ? source : "";
  if (code == ERROR_DIRECTORY) {
    Log("***Unable to locate source path (%d) for directory '%s'", code, folder.c_str());
  } else if (code != ERROR_SUCCESS) {
    Log("***MsiGetSourcePath() error %d. Directory '%s'", code, folder.c_str());
  }
  return code == ERROR_SUCCESS;
}

bool iwiGetSourceFilePath(const std::string &file, const std::string &folder, std::string &path, ResultCode &result) {
  path.clear();
  result = ERROR_INSTALL_FAILURE;
  std::string name;
  if (!FindFileName(file, name)) {
    return false;
  }
  std::string source;
  if (!FindSourceFolder(folder, source)) {
    Log("***File ID '%s', file name '%s'", file.c_str(), name.c_str());
    return false;
  }
  result = ERROR_SUCCESS;
  path = source + name;
  return iwiFileExists(path);
}

}  // namespace zqv
