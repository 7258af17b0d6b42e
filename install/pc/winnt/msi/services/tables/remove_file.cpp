#include "services/tables/remove_file.h"

#include "base/path.h"
#include "base/text.h"
#include "runtime/log.h"
#include "runtime/path_property.h"
#include "services/tables/record_counter.h"
#include "services/tables/table_row.h"

namespace zqv {

namespace {

constexpr UINT kInstallModeIsInteger = 1U << 4;

/// Adds the row and advances the counter. No name stands for the folder itself.
ResultCode AddRow(int counter, const std::string &component, const std::string &folder, const char *name,
                  int installMode) {
  std::string property;
  if (!GetPathProperty(folder, property)) {
    return ERROR_INSTALL_FAILURE;
  }
  const std::string key = Format("ZQV_Record_%d", counter);
  const FieldValue values[] = {key.c_str(), component.c_str(), name, property.c_str(), installMode};
  const ResultCode added = iwiAddTableRow({"RemoveFile", kInstallModeIsInteger, values});
  return AdvanceRecordCounter(counter) ? added : ResultOf(false);
}

}  // namespace

ResultCode iwiStackFilesForDeletion(const std::string &path, const std::string &component, int installMode) {
  Log("Stacking file(s) for deletion: '%s'", path.c_str());
  int counter = 0;
  if (!ReadRecordCounter(counter)) {
    return ERROR_INSTALL_FAILURE;
  }
  std::string folder;
  std::string name;
  const SplitPath split = SplitAtLastBackslash(path);
  if (!split.hasBackslash || split.name.empty()) {
    // Deliberate: the row is added all the same, and its result is what the caller gets.
    Log("***Invalid file path: '%s'", path.c_str());
  } else {
    folder = std::string(split.folder) + "\\";
    name = split.name;
  }
  return AddRow(counter, component, folder, name.c_str(), installMode);
}

ResultCode iwiStackFolderForDeletion(const std::string &path, const std::string &component, int installMode) {
  Log("Stacking folder for deletion: '%s'", path.c_str());
  int counter = 0;
  if (!ReadRecordCounter(counter)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (!EndsInBackslash(path)) {
    Log("***Invalid path: '%s'", path.c_str());
    return ERROR_INSTALL_FAILURE;
  }
  return AddRow(counter, component, path, nullptr, installMode);
}

}  // namespace zqv
