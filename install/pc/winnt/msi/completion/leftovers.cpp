#include "completion/leftovers.h"

#include <span>
#include <string>

#include "base/path.h"
#include "base/text.h"
#include "features/feature_table.h"
#include "platform/msi.h"
#include "previous/base_component.h"
#include "previous/data/own_folder.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "services/files/delete.h"
#include "services/files/folder_check.h"
#include "services/files/search.h"
#include "services/removal/deletion_guard.h"
#include "services/removal/stacked_tree.h"
#include "services/system/product_key.h"
#include "services/system/registry_values.h"
#include "services/tables/components.h"
#include "services/tables/feature_state.h"
#include "services/tables/registry_row.h"
#include "services/tables/remove_file.h"

namespace zqv {

namespace {

constexpr char kProgram[] = "ZQVPGMFOLDER";
constexpr char kData[] = "ZQVDATFOLDER";
constexpr char kLog[] = "ZQVLOGFOLDER";

/// What goes below one of the product's folders.
struct Leftover {
  enum Kind {
    files,   ///< those that the path's last element matches now
    folder,  ///< if it is empty by then; an empty path is the product's folder itself
    tree,    ///< a folder with all that is in it now
  } kind;
  const char *property;  ///< of the product's folder
  std::string path;      ///< below it, without a backslash at its end
};

/// Stacks leftovers in their order, for one component.
class Stacking {
 public:
  Stacking(std::string component, int installMode) : component_(std::move(component)), installMode_(installMode) {}

  /// False when a property cannot be read.
  [[nodiscard]] bool Stack(std::span<const Leftover> leftovers) {
    if (!guard_.Prepare()) {
      return false;
    }
    for (const Leftover &leftover : leftovers) {
      std::string home;
      if (!GetFolderProperty(leftover.property, home)) {
        return false;
      }
      if (guard_.MayDeleteBelow(home)) {
        StackOne(leftover, home);
      }
    }
    return true;
  }

  /// A folder wherever it may be, with all that is in it. Results as Stack.
  [[nodiscard]] bool StackFolder(const std::string &folder, DeletionGuard::Temporary temporary) {
    if (guard_.MayDeleteBelow(folder, temporary)) {
      StackTree(Trimmed(folder), component_, installMode_);
    }
    return guard_.Prepare();
  }

 private:
  void StackOne(const Leftover &leftover, const std::string &home) {
    const std::string path = home + leftover.path;
    switch (leftover.kind) {
      case Leftover::files:
        // A folder below the product's that is a link goes, and what it leads to stays.
        if (!SplitAtLastBackslash(leftover.path).hasBackslash ||
            !IsFolderLink(std::string(SplitAtLastBackslash(path).folder))) {
          static_cast<void>(iwiDeleteFile({.path = path, .component = component_, .installMode = installMode_}));
        }
        break;
      case Leftover::folder:
        static_cast<void>(
            iwiStackFolderForDeletion(leftover.path.empty() ? home : path + "\\", component_, installMode_));
        break;
      case Leftover::tree:
        StackTree(path, component_, installMode_);
        break;
    }
  }

  DeletionGuard guard_;
  std::string component_;
  int installMode_;
};

/// Reads a property and compares it, for a condition that is told where it does not hold.
bool AskWhether(const char *property, const char *value, bool &holds) {
  std::string now;
  if (!GetProperty(property, now)) {
    return false;
  }
  holds = now == value;
  if (!holds) {
    Log("'%s' is not '%s'; nothing is stacked", property, value);
  }
  return true;
}

/// Stacks leftovers for the base feature where a property has a value.
ResultCode StackWhere(const char *property, const char *value, int installMode, std::span<const Leftover> leftovers) {
  bool holds = false;
  if (!AskWhether(property, value, holds)) {
    return ERROR_INSTALL_FAILURE;
  }
  return ResultOf(!holds || Stacking(kBaseComponent, installMode).Stack(leftovers));
}

/// A row acts only when its component does: finds one that does where a feature goes. Empty, with a line, when there is
/// none; false when a property cannot be read.
bool FindActingComponent(const char *feature, std::string &component) {
  std::string installed;
  if (!GetProperty("Installed", installed)) {
    return false;
  }
  const bool baseActs = installed.empty() || AskComponentAction(kBaseComponent) == INSTALLSTATE_ABSENT;
  component = baseActs ? kBaseComponent : FindAbsentComponent(feature);
  if (component.empty()) {
    Log("No component of '%s' goes; nothing is stacked", feature);
  }
  return true;
}

/// Stacks what a feature has left where it goes.
bool StackOfFeature(const char *feature, std::span<const Leftover> leftovers) {
  if (AskFeatureState(feature).action != INSTALLSTATE_ABSENT) {
    return true;
  }
  std::string component;
  if (!FindActingComponent(feature, component)) {
    return false;
  }
  return component.empty() || Stacking(component, kWhenRemoved).Stack(leftovers);
}

}  // namespace

ResultCode StackCleanUpServer() {
  const Leftover leftovers[] = {{Leftover::files, kProgram, "bin\\*.trc"},
                                {Leftover::files, kProgram, "bin\\*.err"},
                                {Leftover::files, kData, "errors\\*.log"},
                                {Leftover::folder, kData, "errors"}};
  return ResultOf(StackOfFeature(NameOf(Feature::Server), leftovers));
}

ResultCode StackCleanUpConversionTables() {
  const Leftover leftovers[] = {{Leftover::files, kData, "conv\\*.tbl"}, {Leftover::folder, kData, "conv"}};
  return StackWhere("ZQVREMOVE", "1", kWhenRemoved, leftovers);
}

ResultCode StackCleanUpDocumentation() {
  for (const char *feature : kFeatureNames) {
    const std::string_view language = DocumentationLanguageOf(feature);
    if (language.empty()) {
      continue;
    }
    const std::string folder = "docs\\" + std::string(language);
    const Leftover leftovers[] = {{Leftover::files, kProgram, folder + "\\*.idx"},
                                  {Leftover::folder, kProgram, folder}};
    if (!StackOfFeature(feature, leftovers)) {
      return ERROR_INSTALL_FAILURE;
    }
  }
  return ERROR_SUCCESS;
}

ResultCode StackDeleteMaintenance() {
  bool holds = false;
  if (!AskWhether("ZQVREMOVE", "1", holds)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (!holds) {
    return ERROR_SUCCESS;
  }
  Stacking stacking(kBaseComponent, kWhenRemoved);
  bool good = true;
  const bool listed = VisitRegistryValues(kMaintenanceKey, [&](const EnumeratedValue &value) {
    if (value.name.starts_with(kMaintenanceMarker)) {
      good = stacking.StackFolder(value.Text(), DeletionGuard::Temporary::barred) && good;
      good = StackRegistryRemoval(kMaintenanceKey, value.name, kBaseComponent) == ERROR_SUCCESS && good;
    }
  });
  return ResultOf(listed && good);
}

ResultCode StackDeleteWebScripts() {
  const Leftover leftovers[] = {{Leftover::tree, kData, "web\\scripts"}};
  return StackWhere("ZQVLEAVEWEBDATAINSTALL", "delete", kAlways, leftovers);
}

ResultCode StackDeleteOwnFolders() {
  if (!GetKeptProperty(Kept::tempFolder)) {
    return ERROR_INSTALL_FAILURE;
  }
  Stacking stacking(kBaseComponent, kWhenRemoved);
  for (const char *name : {kMigrationFolder, kSavedFolder}) {
    std::string folder;
    if (FindOwnFolder(name, folder) && !stacking.StackFolder(folder, DeletionGuard::Temporary::allowed)) {
      return ERROR_INSTALL_FAILURE;
    }
  }
  return ERROR_SUCCESS;
}

ResultCode StackCleanUpFinal() {
  bool holds = false;
  if (!AskWhether("ZQVREMOVE", "1", holds)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (!holds) {
    return ERROR_SUCCESS;
  }
  const Leftover leftovers[] = {{Leftover::files, kData, "QVSeries.ini"},
                                {Leftover::files, kData, "zqvqmgrs.txt"},
                                {Leftover::files, kData, "zqvmjpse.txt"},
                                {Leftover::files, kData, "zqvilogn.txt"},
                                {Leftover::folder, kData, "qmgrs"},
                                {Leftover::folder, kData, "web"},
                                {Leftover::folder, kData, ""}};
  return StackWhere("ZQVLEAVEQMDATAREMOVE", "delete", kWhenRemoved, leftovers);
}

ResultCode UninstallCleanUp() {
  const Leftover leftovers[] = {
      {Leftover::files, kLog, "qv*.log"}, {Leftover::files, kLog, "qv*.txt"}, {Leftover::folder, kLog, ""}};
  return StackWhere("ZQVREMOVE", "1", kWhenRemoved, leftovers);
}

}  // namespace zqv
