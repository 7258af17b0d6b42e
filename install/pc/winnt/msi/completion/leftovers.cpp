#include "completion/leftovers.h"

#include <algorithm>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

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
  const char *path;      ///< below it, without a backslash at its end; kLanguage stands for a language
};

constexpr std::string_view kLanguage = "LANGUAGE";

/// What a property has to be for anything to be stacked.
struct Condition {
  const char *property;
  const char *value;
};

constexpr Condition kProductGoes{"ZQVREMOVE", "1"};
constexpr Condition kDataGoes{"ZQVLEAVEQMDATAREMOVE", "delete"};
constexpr Condition kWebDataGoes{"ZQVLEAVEWEBDATAINSTALL", "delete"};

constexpr Leftover kServer[] = {{Leftover::files, kProgram, "bin\\*.trc"},
                                {Leftover::files, kProgram, "bin\\*.err"},
                                {Leftover::files, kData, "errors\\*.log"},
                                {Leftover::folder, kData, "errors"}};
constexpr Leftover kDocumentation[] = {{Leftover::files, kProgram, "docs\\LANGUAGE\\*.idx"},
                                       {Leftover::folder, kProgram, "docs\\LANGUAGE"}};
constexpr Leftover kConversionTables[] = {{Leftover::files, kData, "conv\\*.tbl"}, {Leftover::folder, kData, "conv"}};
constexpr Leftover kWebScripts[] = {{Leftover::tree, kData, "web\\scripts"}};
constexpr Leftover kDataFolder[] = {{Leftover::files, kData, "QVSeries.ini"},
                                    {Leftover::files, kData, "zqvqmgrs.txt"},
                                    {Leftover::files, kData, "zqvmjpse.txt"},
                                    {Leftover::files, kData, "zqvilogn.txt"},
                                    {Leftover::folder, kData, "qmgrs"},
                                    {Leftover::folder, kData, "web"},
                                    {Leftover::folder, kData, ""}};
constexpr Leftover kLogs[] = {
    {Leftover::files, kLog, "qv*.log"}, {Leftover::files, kLog, "qv*.txt"}, {Leftover::folder, kLog, ""}};

/// Stacks leftovers in their order. One serves one action, so that nothing is read or told twice.
class Stacking {
 public:
  explicit Stacking(int installMode) : installMode_(installMode) {}

  /// False when a property cannot be read.
  [[nodiscard]] bool Stack(std::span<const Leftover> leftovers, const std::string &component = kBaseComponent,
                           std::string_view language = "") {
    if (!guard_.Prepare()) {
      return false;
    }
    for (const Leftover &leftover : leftovers) {
      if (property_ != leftover.property && !GetFolderProperty(leftover.property, home_)) {
        return false;
      }
      property_ = leftover.property;
      std::string path = leftover.path;
      if (const std::size_t at = path.find(kLanguage); at != std::string::npos) {
        path.replace(at, kLanguage.size(), language);
      }
      if (guard_.MayDeleteBelow(home_)) {
        StackOne(leftover.kind, path, component);
      }
    }
    return true;
  }

  /// A folder wherever it may be, with all that is in it. Results as Stack.
  [[nodiscard]] bool StackFolder(const std::string &folder, DeletionGuard::Temporary temporary) {
    if (guard_.MayDeleteBelow(folder, temporary)) {
      StackTree(Trimmed(folder), kBaseComponent, installMode_);
    }
    return guard_.Prepare();
  }

 private:
  void StackOne(Leftover::Kind kind, const std::string &below, const std::string &component) {
    const std::string path = home_ + below;
    switch (kind) {
      case Leftover::files:
        // A folder below the product's that is a link goes, and what it leads to stays.
        if (!SplitAtLastBackslash(below).hasBackslash ||
            !IsFolderLink(std::string(SplitAtLastBackslash(path).folder))) {
          static_cast<void>(iwiDeleteFile({.path = path, .component = component, .installMode = installMode_}));
        }
        break;
      case Leftover::folder:
        static_cast<void>(iwiStackFolderForDeletion(below.empty() ? home_ : path + "\\", component, installMode_));
        break;
      case Leftover::tree:
        StackTree(path, component, installMode_);
        break;
    }
  }

  DeletionGuard guard_;
  int installMode_;
  std::string_view property_;  ///< of the product's folder that was asked for last
  std::string home_;
};

/// Finds out whether all conditions hold, and tells the first that does not. False when a property cannot be read.
bool AskWhether(std::span<const Condition> conditions, bool &hold) {
  hold = true;
  for (const Condition &condition : conditions) {
    std::string value;
    if (!GetProperty(condition.property, value)) {
      return false;
    }
    if (value != condition.value) {
      Log("'%s' is not '%s'; nothing is stacked", condition.property, condition.value);
      hold = false;
      return true;
    }
  }
  return true;
}

ResultCode StackWhere(std::initializer_list<Condition> conditions, std::span<const Leftover> leftovers,
                      int installMode) {
  bool hold = false;
  if (!AskWhether(conditions, hold)) {
    return ERROR_INSTALL_FAILURE;
  }
  return ResultOf(!hold || Stacking(installMode).Stack(leftovers));
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

/// Stacks what a feature has left where it goes. False when a property cannot be read.
bool StackOfFeature(const char *feature, std::span<const Leftover> leftovers, Stacking &stacking) {
  if (AskFeatureState(feature).action != INSTALLSTATE_ABSENT) {
    return true;
  }
  std::string component;
  if (!FindActingComponent(feature, component)) {
    return false;
  }
  return component.empty() || stacking.Stack(leftovers, component, DocumentationLanguageOf(feature));
}

}  // namespace

ResultCode StackCleanUpServer() {
  Stacking stacking(kWhenRemoved);
  return ResultOf(StackOfFeature(NameOf(Feature::Server), kServer, stacking));
}

ResultCode StackCleanUpDocumentation() {
  Stacking stacking(kWhenRemoved);
  return ResultOf(std::all_of(std::begin(kFeatureNames), std::end(kFeatureNames), [&](const char *feature) {
    return DocumentationLanguageOf(feature).empty() || StackOfFeature(feature, kDocumentation, stacking);
  }));
}

ResultCode StackCleanUpConversionTables() { return StackWhere({kProductGoes}, kConversionTables, kWhenRemoved); }

ResultCode StackDeleteMaintenance() {
  bool holds = false;
  if (!AskWhether({&kProductGoes, 1}, holds)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (!holds) {
    return ERROR_SUCCESS;
  }
  Stacking stacking(kWhenRemoved);
  bool good = true;
  // Maintenance that cannot be listed, which is logged, must not make a product unremovable.
  static_cast<void>(VisitRegistryValues(kMaintenanceKey, [&](const EnumeratedValue &value) {
    if (value.name.starts_with(kMaintenanceMarker)) {
      good = stacking.StackFolder(value.Text(), DeletionGuard::Temporary::barred) && good;
      good = StackRegistryRemoval(kMaintenanceKey, value.name, kBaseComponent) == ERROR_SUCCESS && good;
    }
  }));
  return ResultOf(good);
}

ResultCode StackDeleteWebScripts() { return StackWhere({kWebDataGoes}, kWebScripts, kAlways); }

ResultCode StackDeleteOwnFolders() {
  if (!GetKeptProperty(Kept::tempFolder)) {
    return ERROR_INSTALL_FAILURE;
  }
  Stacking stacking(kWhenRemoved);
  for (const char *name : {kMigrationFolder, kSavedFolder}) {
    std::string folder;
    if (FindOwnFolder(name, folder) && !stacking.StackFolder(folder, DeletionGuard::Temporary::allowed)) {
      return ERROR_INSTALL_FAILURE;
    }
  }
  return ERROR_SUCCESS;
}

ResultCode StackCleanUpFinal() { return StackWhere({kProductGoes, kDataGoes}, kDataFolder, kWhenRemoved); }

ResultCode UninstallCleanUp() { return StackWhere({kProductGoes}, kLogs, kWhenRemoved); }

}  // namespace zqv
