#include "features/lists/summary.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "features/feature_table.h"
#include "features/lists/list_box.h"
#include "runtime/installer_result.h"
#include "runtime/message.h"
#include "runtime/property.h"
#include "runtime/restart.h"
#include "runtime/table_query.h"
#include "services/system/pending_renames.h"
#include "services/tables/feature_state.h"

namespace zqv {

namespace {

constexpr UINT kFeatureField = 1;
constexpr UINT kTitleField = 3;

/// A property that is shown in a text with one insert.
struct Shown {
  const char *property;
  UINT message;
  const char *fallback;
};
constexpr Shown kFolders[] = {
    {"ZQVPGMFOLDER", message::kProgramFolder, "Program folder: %1"},
    {"ZQVDATFOLDER", message::kDataFolder, "Data folder: %1"},
    {"ZQVLOGFOLDER", message::kLogFolder, "Log folder: %1"},
};
constexpr Shown kTraceLog{"ZQVUSERTRACEPATH", message::kTraceLog, "Trace log: %1"};

using Titles = std::map<std::string, std::string>;

void AddFilled(ListBox &list, UINT message, const char *fallback, const std::string &value) {
  list.Add(FillInsert(NlsText(message, fallback), "%1", value));
}

/// False when the property cannot be read.
bool AddProperty(ListBox &list, const Shown &shown) {
  std::string value;
  if (!GetProperty(shown.property, value)) {
    return false;
  }
  if (!value.empty()) {
    AddFilled(list, shown.message, shown.fallback, value);
  }
  return true;
}

bool AddTitle(ListBox &list) {
  std::string title;
  if (!GetProperty("ZQVSETUPTITLE", title)) {
    return false;
  }
  if (!title.empty()) {
    list.Add(title);
  }
  return true;
}

/// The titles that the Feature table has, by feature. One that cannot be read is logged, and not there.
Titles ReadTitles() {
  Titles titles;
  ResultCode ignored = ERROR_SUCCESS;
  VisitRows("SELECT * FROM Feature", ignored, [&](MSIHANDLE row) {
    std::string feature;
    std::string title;
    if (iwiCheckMsiResult("MsiRecordGetString", "Feature", ReadRecordText(row, kFeatureField, feature), ignored) ==
            ERROR_SUCCESS &&
        iwiCheckMsiResult("MsiRecordGetString", "Title", ReadRecordText(row, kTitleField, title), ignored) ==
            ERROR_SUCCESS &&
        !title.empty()) {
      titles[feature] = title;
    }
    return true;
  });
  return titles;
}

bool IsRemoved(const FeatureState &state) {
  const bool isInstalled = state.installed == INSTALLSTATE_LOCAL || state.installed == INSTALLSTATE_SOURCE ||
                           state.installed == INSTALLSTATE_ADVERTISED;
  return state.action == INSTALLSTATE_ABSENT && isInstalled;
}

void AddFeatures(ListBox &list) {
  std::vector<std::string> installed;
  std::vector<std::string> removed;
  const Titles titles = ReadTitles();
  for (const char *feature : kFeatureNames) {
    const FeatureState state = AskFeatureState(feature);
    const auto title = titles.find(feature);
    const std::string shown = title == titles.end() ? feature : title->second;
    if (state.action == INSTALLSTATE_LOCAL) {
      installed.push_back(shown);
    } else if (IsRemoved(state)) {
      removed.push_back(shown);
    }
  }
  for (const std::string &feature : installed) {
    AddFilled(list, message::kInstalledFeature, "To be installed: %1", feature);
  }
  for (const std::string &feature : removed) {
    AddFilled(list, message::kRemovedFeature, "To be removed: %1", feature);
  }
}

/// False when a property cannot be read.
bool AddRestart(ListBox &list) {
  std::string boot;
  std::string folder;
  bool needed = false;
  if (!GetProperty("ZQVBOOT", boot) || !AskRestart(needed) || !GetProperty("ZQVPGMFOLDER", folder)) {
    return false;
  }
  if (!boot.empty() || needed || IsRestartOwed(folder)) {
    list.Add(NlsText(message::kMayRestart, "Windows may have to be restarted."));
  }
  return true;
}

bool AddFolders(ListBox &list) {
  return std::all_of(std::begin(kFolders), std::end(kFolders),
                     [&](const Shown &folder) { return AddProperty(list, folder); });
}

}  // namespace

ResultCode ListInstallSummary() {
  ListBox list(kSummaryList);
  if (!AddTitle(list) || !AddFolders(list)) {
    return ERROR_INSTALL_FAILURE;
  }
  AddFeatures(list);
  return ResultOf(AddRestart(list) && AddProperty(list, kTraceLog));
}

}  // namespace zqv
