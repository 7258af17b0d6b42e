#include "features/answers/response_writer.h"

#include <string>
#include <utility>

#include "features/feature_table.h"
#include "platform/c_file.h"
#include "platform/msi.h"
#include "platform/owner.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "services/tables/feature_state.h"

namespace zqv {

namespace {

constexpr char kComment[] = ";";

struct PropertyLine {
  const char *keyword;
  const char *prefix = "";
};
constexpr PropertyLine kSwitches[] = {{"KEEPQMDATA"},   {"KEEPWEBDATA"},           {"USERCHOICE"},
                                      {"LAUNCHWIZ"},    {"WIZPARMFILE", kComment}, {"STARTSERVICE"},
                                      {"STARTTASKBAR"}, {"HIGHCONTRAST"}};

/// Names of features, joined with ",".
struct FeatureLists {
  std::string local, absent, source, advertised;
};

void AddLine(std::string &text, const char *keyword, const std::string &value, const char *prefix = "") {
  text.append(prefix).append(keyword).append("=\"").append(value).append("\"\r\n");
}

bool AddFolders(std::string &text) {
  constexpr std::pair<const char *, const char *> kFolders[] = {
      {"PGMFOLDER", "ZQVPGMFOLDER"}, {"DATFOLDER", "ZQVDATFOLDER"}, {"LOGFOLDER", "ZQVLOGFOLDER"}};
  for (const auto &[keyword, property] : kFolders) {
    std::string folder;
    if (!GetTrimmedProperty(property, folder)) {
      return false;
    }
    AddLine(text, keyword, folder);
  }
  return true;
}

/// The list that a feature in this state belongs to; null when it belongs to none.
std::string *ListFor(INSTALLSTATE state, FeatureLists &lists) {
  switch (state) {
    case INSTALLSTATE_ADVERTISED:
      return &lists.advertised;
    case INSTALLSTATE_ABSENT:
      return &lists.absent;
    case INSTALLSTATE_LOCAL:
      return &lists.local;
    case INSTALLSTATE_SOURCE:
    case INSTALLSTATE_SOURCEABSENT:
      return &lists.source;
    default:
      return nullptr;
  }
}

bool ListFeature(const char *feature, FeatureLists &lists) {
  ResultCode failure = ERROR_SUCCESS;
  const auto [installed, action] = AskFeatureState(feature, &failure);
  if (failure != ERROR_SUCCESS) {
    Log("Error %d from MsiGetFeatureState(%s)", failure, feature);
    return false;
  }
  std::string *list = ListFor(action, lists);
  list = list != nullptr ? list : ListFor(installed, lists);
  if (list != nullptr) {
    list->append(list->empty() ? "" : ",").append(feature);
  }
  return true;
}

/// A feature whose state cannot be read is left out, and makes the answer a failure.
bool AddFeatures(std::string &text) {
  bool complete = true;
  FeatureLists lists;
  for (const char *feature : kFeatureNames) {
    complete = ListFeature(feature, lists) && complete;
  }
  AddLine(text, "ADDLOCAL", lists.local);
  AddLine(text, "REMOVE", lists.absent);
  if (!lists.source.empty()) {
    AddLine(text, "ADDSOURCE", lists.source);
  }
  if (!lists.advertised.empty()) {
    AddLine(text, "ADVERTISE", lists.advertised);
  }
  return complete;
}

bool AddSwitches(std::string &text) {
  for (const auto &[keyword, prefix] : kSwitches) {
    std::string value;
    if (!GetProperty(keyword, value)) {
      return false;
    }
    AddLine(text, keyword, value, prefix);
  }
  return true;
}

/// Writes the text as bytes, so that its line ends stay as they are, and closes the file.
bool WriteAndClose(OwnedStream &file, const std::string &path, const std::string &text) {
  const bool written = std::fwrite(text.data(), 1, text.size(), file.Get()) == text.size();
  if (file.Close() != 0 || !written) {
    Log("***Error writing '%s'", path.c_str());
    return false;
  }
  return true;
}

}  // namespace

ResultCode WriteResponseFile() {
  std::string path;
  if (!GetTrimmedProperty("SAVEINI", path)) {
    return ERROR_INSTALL_FAILURE;
  }
  Log("Writing response file '%s'", path.c_str());
  OwnedStream file(OpenCFile(path.c_str(), "wb"));
  if (!file) {
    Log("***Can't open '%s'", path.c_str());
    return ERROR_INSTALL_FAILURE;
  }
  // Written at once, so that a file never holds but a part of the answers.
  std::string text = "[Response]\r\n";
  if (!AddFolders(text)) {
    return ERROR_INSTALL_FAILURE;
  }
  const bool complete = AddFeatures(text);
  AddLine(text, "AGREETOLICENSE", "yes", kComment);
  AddLine(text, "REMOVEFEATURES", "yes", kComment);
  if (!AddSwitches(text)) {
    return ERROR_INSTALL_FAILURE;
  }
  return ResultOf(WriteAndClose(file, path, text) && complete);
}

}  // namespace zqv
