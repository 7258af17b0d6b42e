#include "previous/data/queue_manager_data.h"

#include <string>
#include <vector>

#include "base/path.h"
#include "base/text.h"
#include "previous/base_component.h"
#include "previous/data/own_folder.h"
#include "running/queue_managers.h"
#include "runtime/log.h"
#include "runtime/phase.h"
#include "runtime/progress.h"
#include "runtime/property.h"
#include "services/files/copy.h"
#include "services/files/delete_entry.h"
#include "services/removal/deletion_guard.h"
#include "services/removal/stacked_tree.h"
#include "services/tables/remove_file.h"

namespace zqv {

namespace {

constexpr char kQueueManagerFolder[] = "qmgrs";
constexpr char kProductSettings[] = "QVSeries.ini";
constexpr char kQueueManagerSettings[] = "qm.ini";
constexpr int kProductFiles = 2;  ///< the list, and the product's settings
constexpr char kUnits[] = "ZQVSAVEQMUNITS";

/// The data folder without a backslash at its end, and the queue managers that it lists.
struct QueueManagers {
  std::string data;
  std::vector<std::string> names;
};

bool ReadQueueManagers(QueueManagers &found) {
  if (!GetKeptProperty(Kept::dataFolder)) {
    return false;
  }
  found.data = ValueOf(Kept::dataFolder);
  if (IsAbsoluteFolder(found.data)) {
    found.names = ListQueueManagers(found.data);
  } else {
    LogLine("No data folder; no queue managers");
  }
  return true;
}

std::string JoinThatFit(const std::vector<std::string> &names) {
  std::string list;
  for (const std::string &name : names) {
    const std::string added = (list.empty() ? "" : ",") + name;
    if (list.size() + added.size() >= kNameListLength) {
      break;
    }
    list += added;
  }
  return list;
}

/// Finds out whether all of the product goes, and the data with it.
bool AskWhetherDeleted(bool &deleted) {
  std::string removal;
  std::string fate;
  if (!GetProperty("ZQVREMOVE", removal) || !GetProperty("ZQVLEAVEQMDATAREMOVE", fate)) {
    return false;
  }
  deleted = removal == "1" && fate == "delete";
  return true;
}

/// The copies of the deferred pass. It reports just the units that were announced, whatever the list says by then.
class Save {
 public:
  explicit Save(int units) : unitsLeft_(units) {}

  bool Enter(const std::string &folder, HeldFolder &held) {
    const bool entered = EnterOwnFolder(folder, held);
    result_ = entered ? result_ : static_cast<ResultCode>(ERROR_INSTALL_FAILURE);
    return entered;
  }

  void Copy(const std::string &source, const std::string &destination, const char *name) {
    const ResultCode copied = iwiCopyFile(false, source, destination, name);
    result_ = copied != ERROR_SUCCESS ? copied : result_;
    Report();
  }

  /// Reports what is left of the announced units, in one step: the number comes from a file. Gives the last failure.
  ResultCode End() const {
    if (unitsLeft_ > 0) {
      SendProgress(0, AddUnits(0, unitsLeft_));
    }
    return result_;
  }

 private:
  void Report() {
    if (unitsLeft_ > 0) {
      --unitsLeft_;
      SendProgress(0, kTicksPerUnit);
    }
  }

  int unitsLeft_;
  ResultCode result_ = ERROR_SUCCESS;
};

}  // namespace

ResultCode StackLoadQueueManagers() {
  QueueManagers found;
  if (!ReadQueueManagers(found)) {
    return ERROR_INSTALL_FAILURE;
  }
  return ResultOf(SetProperty("ZQVQMGRCOUNT", std::to_string(found.names.size())) &&
                  SetProperty("ZQVQMGRLIST", JoinThatFit(found.names)));
}

ResultCode StackDeleteQueueManagers() {
  bool deleted = false;
  if (!AskWhetherDeleted(deleted)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (!deleted) {
    LogLine("Queue-manager data is kept");
    return ERROR_SUCCESS;
  }
  QueueManagers found;
  DeletionGuard guard;
  if (!ReadQueueManagers(found) || !guard.Prepare()) {
    return ERROR_INSTALL_FAILURE;
  }
  if (!guard.MayDeleteBelow(found.data)) {
    return ERROR_SUCCESS;
  }
  const std::string folder = found.data + "\\" + kQueueManagerFolder + "\\";
  for (const std::string &name : found.names) {
    StackTree(folder + name, kBaseComponent, kWhenRemoved);
  }
  // What cannot be stacked is logged, and stays.
  static_cast<void>(iwiStackFolderForDeletion(folder, kBaseComponent, kWhenRemoved));
  static_cast<void>(DeleteOneFile(
      {.path = found.data + "\\" + kQueueManagerList, .component = kBaseComponent, .installMode = kWhenRemoved}));
  return ERROR_SUCCESS;
}

ResultCode PlanQueueManagerSave() {
  QueueManagers found;
  std::string folder;
  if (!ReadQueueManagers(found) || !ClearOwnFolder(kSavedFolder, folder)) {
    return ERROR_INSTALL_FAILURE;
  }
  const int names = static_cast<int>(found.names.size());  // there is no memory for more than a number holds
  const int units = names == 0 ? 0 : kProductFiles + names;
  AnnounceTicks(AddUnits(0, units));
  return ResultOf(SetSwitch("ZQVSAVEQMCONFIG", names != 0) && SetProperty(kUnits, std::to_string(units)));
}

ResultCode SaveQueueManagerSettings() {
  if (AnnouncePhase() != Phase::deferred) {
    return ERROR_SUCCESS;
  }
  std::string folder;
  std::string units;
  QueueManagers found;
  if (!FindOwnFolder(kSavedFolder, folder) || !GetProperty(kUnits, units) || !ReadQueueManagers(found)) {
    return ERROR_INSTALL_FAILURE;
  }
  Save save(DecimalValue(units));
  HeldFolder top;
  HeldFolder middle;
  const std::string source = found.data + "\\" + kQueueManagerFolder + "\\";
  const std::string target = folder + "\\" + kQueueManagerFolder + "\\";
  if (save.Enter(folder, top)) {
    save.Copy(found.data, folder, kQueueManagerList);
    save.Copy(found.data, folder, kProductSettings);
    if (save.Enter(Trimmed(target), middle)) {
      for (const std::string &name : found.names) {
        HeldFolder own;
        if (save.Enter(target + name, own)) {
          save.Copy(source + name, target + name, kQueueManagerSettings);
        }
      }
    }
  }
  return save.End();
}

}  // namespace zqv
