#include "init/secondary/secondary.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "features/answers/response_property.h"
#include "features/feature_lists.h"
#include "init/removal.h"
#include "previous/previous_installation.h"
#include "previous/replacement.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "runtime/user_interface.h"
#include "services/files/create.h"

namespace zqv {

namespace {

/// Longer versions cannot be read by the actions that ask for ZQVPREVVERSION.
constexpr std::size_t kLongestVersion = 15;

/// Finds out whether the response file has a say in which features are installed; tells why not.
bool AskWhetherTaken(bool &taken) {
  taken = false;
  std::string value;
  if (!GetProperty("Installed", value)) {
    return false;
  }
  if (!value.empty()) {
    LogLine("Installed already; no feature lists are taken from the response file");
    return true;
  }
  bool full = false;
  if (!AskFullUserInterface(full)) {
    return false;
  }
  if (full) {
    LogLine("The dialogs choose the features; no lists are taken from the response file");
    return true;
  }
  bool given = false;
  for (const char *list : kFeatureLists) {
    if (!GetProperty(list, value, kNameListLength)) {
      return false;
    }
    given = given || !value.empty();
  }
  if (given) {
    LogLine("Feature lists are given; none is taken from the response file");
  }
  taken = !given;
  return true;
}

bool RemovesEverything(std::string_view list) {
  const std::vector<std::string_view> names = NamesInList(list);
  return std::any_of(names.begin(), names.end(), IsAllFeatures);
}

/// Reads all lists before the first is set.
ResultCode TakeFeatureLists() {
  std::array<std::string, std::size(kFeatureLists)> lists;
  for (std::size_t at = 0; at < lists.size(); ++at) {
    bool fromResponse = false;
    if (!GetPropertyWithResponse(kFeatureLists[at], lists[at], &fromResponse, kNameListLength)) {
      return ERROR_INSTALL_FAILURE;
    }
    if (std::string_view(kFeatureLists[at]) == "REMOVE" && RemovesEverything(lists[at])) {
      LogLine("***A response file cannot remove everything");
      return ERROR_INSTALL_FAILURE;
    }
  }
  for (std::size_t at = 0; at < lists.size(); ++at) {
    if (!lists[at].empty() && !SetProperty(kFeatureLists[at], lists[at])) {
      return ERROR_INSTALL_FAILURE;
    }
  }
  return ERROR_SUCCESS;
}

/// Sets a property that is empty and for which there is a value.
bool FillEmpty(const char *property, const std::string &value) {
  std::string now;
  if (!GetProperty(property, now)) {
    return false;
  }
  return !now.empty() || value.empty() || SetProperty(property, value);
}

bool FillPrevious() {
  const PreviousInstallation &previous = FindPreviousInstallation();
  std::string version = previous.version;
  if (version.size() > kLongestVersion) {
    Log("***Version '%s' of the previous installation is too long", version.c_str());
    version.clear();
  }
  return FillEmpty("ZQVPREVPGM", previous.programFolder) && FillEmpty("ZQVPREVDAT", previous.dataFolder) &&
         FillEmpty("ZQVPREVVERSION", version);
}

}  // namespace

ResultCode InitialiseSecondary() {
  bool taken = false;
  if (!AskWhetherTaken(taken)) {
    return ERROR_INSTALL_FAILURE;
  }
  const ResultCode result = taken ? TakeFeatureLists() : static_cast<ResultCode>(ERROR_SUCCESS);
  return result != ERROR_SUCCESS ? result : ResultOf(RepublishWholeRemoval());
}

ResultCode InitialiseScript() {
  if (!GetKeptProperty(Kept::tempFolder)) {
    return ERROR_INSTALL_FAILURE;
  }
  const std::string &folder = ValueOf(Kept::tempFolder);
  if (!folder.empty()) {
    iwiCreateFolderTree(folder + "\\");
  }
  std::string installed;
  if (!GetProperty("Installed", installed)) {
    return ERROR_INSTALL_FAILURE;
  }
  return ResultOf(!installed.empty() || FillPrevious());
}

ResultCode CheckWebAdmin() { return ResultOf(SetSwitch("ZQVWEBADMIN", HasOldComponent("Web Administration"))); }

ResultCode SetZqvRemove() { return ResultOf(RepublishWholeRemoval()); }

}  // namespace zqv
