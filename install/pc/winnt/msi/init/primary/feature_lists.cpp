#include "init/primary/feature_lists.h"

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/result_code.h"
#include "base/text.h"
#include "features/answers/response_property.h"
#include "features/feature_lists.h"
#include "runtime/installer_result.h"
#include "runtime/log.h"
#include "runtime/message.h"
#include "runtime/property_source.h"
#include "runtime/table_query.h"

namespace zqv {

namespace {

constexpr char kQuery[] = "SELECT * FROM Feature";
constexpr char kInResponseFile[] = "Unknown feature(s) '%1' in property '%2' in '%3'. (ZQV4742)";
constexpr char kOnCommandLine[] = "Unknown feature(s) '%1' in command-line property '%2'. (ZQV4740)";

/// The features of the package, read when they are first asked for.
class FeatureNames {
 public:
  /// False when the table cannot be read.
  bool Load() {
    if (loaded_) {
      return true;
    }
    ResultCode result = ERROR_SUCCESS;
    const bool complete = VisitRows(kQuery, result, [&](MSIHANDLE row) {
      std::string name;
      const ResultCode read = CheckFirstFailure("MsiRecordGetString", "Feature", ReadRecordText(row, 1, name), result);
      names_.insert(std::move(name));
      return read == ERROR_SUCCESS;
    });
    loaded_ = complete && result == ERROR_SUCCESS;
    return loaded_;
  }

  bool Has(std::string_view name) const { return names_.find(name) != names_.end(); }

 private:
  std::set<std::string, std::less<>> names_;
  bool loaded_ = false;
};

/// The names joined with commas; a text of more than `room` characters is cut, and ends in dots.
std::string JoinWithin(std::size_t room, const std::vector<std::string_view> &names) {
  std::string text;
  for (const std::string_view name : names) {
    text += text.empty() ? "" : ",";
    text += name;
  }
  constexpr std::string_view kDots = "...";
  if (text.size() > room) {
    text.replace(room - kDots.size(), std::string::npos, kDots);
  }
  return text;
}

void ShowUnknown(const std::vector<std::string_view> &names, const std::string &property, bool fromResponse) {
  const std::string format = fromResponse ? kInResponseFile : kOnCommandLine;
  const std::string path = fromResponse ? ResponseFilePath() : "";
  // The path has at most 259 characters, so there is always room for some names.
  const std::size_t room = kLongLength - 1 - format.size() - property.size() - path.size();
  std::string text;
  FormatInserts(text, format, JoinWithin(room, names).c_str(), property.c_str(), path.c_str());
  iiiDisplayMsgBox(text, MB_ICONERROR);
}

}  // namespace

bool ValidateFeatureLists() {
  FeatureNames features;
  bool valid = true;
  for (const char *property : kFeatureLists) {
    std::string list;
    bool fromResponse = false;
    if (!GetPropertyWithResponse(property, list, &fromResponse, kNameListLength)) {
      return false;
    }
    std::vector<std::string_view> names = NamesInList(list);
    std::erase_if(names, IsAllFeatures);
    if (!names.empty() && !features.Load()) {
      return false;
    }
    std::erase_if(names, [&](std::string_view name) { return features.Has(name); });
    if (!names.empty()) {
      ShowUnknown(names, property, fromResponse);
      valid = false;
    }
  }
  if (!valid) {
    Log("***Stopping because of unknown features");
    return false;
  }
  return true;
}

}  // namespace zqv
