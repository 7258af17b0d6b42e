#include "completion/readme.h"

#include <string>

#include "base/code_page.h"
#include "base/text.h"
#include "runtime/installer_result.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "runtime/table_query.h"
#include "services/files/folder_check.h"

namespace zqv {

namespace {

/// The part behind the bar: a field without one has a name that is short and long alike.
std::string LongName(const std::string &field) {
  const std::size_t bar = FindCharacter(field, '|');
  return bar == std::string::npos ? field : field.substr(bar + 1);
}

/// Whether the package has a file of this name. False, with a line, where that cannot be read.
bool HasFile(const std::string &name) {
  bool found = false;
  ResultCode result = ERROR_SUCCESS;
  VisitRows("SELECT FileName FROM File", result, [&](MSIHANDLE row) {
    std::string field;
    const ResultCode read = ReadRecordText(row, 1, field);
    found = CheckFirstFailure("MsiRecordGetString", "FileName", read, result) == ERROR_SUCCESS &&
            EqualName(LongName(field), name);
    return !found && read == ERROR_SUCCESS;
  });
  return found;
}

}  // namespace

ResultCode SetReadme() {
  std::string folder;
  std::string language;
  if (!GetFolderProperty("ZQVPGMFOLDER", folder) || !GetProperty("ZQVSYSTEMLANGUAGECODE", language)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (folder.empty()) {
    LogLine("No program folder; ARPREADME stays");
    return ERROR_SUCCESS;
  }
  const std::string translated = Format("readme_%s.txt", language.c_str());
  return ResultOf(SetProperty("ARPREADME", folder + (HasFile(translated) ? translated : "readme.txt")));
}

}  // namespace zqv
