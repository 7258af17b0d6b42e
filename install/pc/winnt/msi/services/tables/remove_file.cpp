#include "services/tables/remove_file.h"

#include "base/path.h"
#include "runtime/log.h"
#include "runtime/path_property.h"
#include "services/tables/numbered_row.h"
#include "services/tables/table_row.h"

namespace zqv {

namespace {

constexpr char kKeyPrefix[] = "ZQV_Record_";

/// Adds a row; nothing when its folder has no property. No name stands for the folder itself.
std::optional<ResultCode> AddRow(const char *key, const std::string &component, const std::string &folder,
                                 const char *name, int installMode) {
  std::string property;
  if (!GetPathProperty(folder, property)) {
    return std::nullopt;
  }
  const FieldValue values[] = {key, component.c_str(), name, property.c_str(), installMode};
  return iwiAddTableRow({"RemoveFile", values});
}

}  // namespace

ResultCode iwiStackFilesForDeletion(const std::string &path, const std::string &component, int installMode) {
  Log("Stacking file(s) for deletion: '%s'", path.c_str());
  return AddNumberedRow(kKeyPrefix, [&](const char *key) {
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
    return AddRow(key, component, folder, name.c_str(), installMode);
  });
}

ResultCode iwiStackFolderForDeletion(const std::string &path, const std::string &component, int installMode) {
  Log("Stacking folder for deletion: '%s'", path.c_str());
  return AddNumberedRow(kKeyPrefix, [&](const char *key) -> std::optional<ResultCode> {
    if (!EndsInBackslash(path)) {
      Log("***Invalid path: '%s'", path.c_str());
      return std::nullopt;
    }
    return AddRow(key, component, path, nullptr, installMode);
  });
}

}  // namespace zqv
