#include "side/conversion_tables.h"

#include <string>

#include "base/path.h"
#include "previous/data/own_folder.h"
#include "runtime/log.h"
#include "runtime/phase.h"
#include "runtime/progress.h"
#include "runtime/property.h"
#include "services/files/attributes.h"
#include "services/files/copy.h"
#include "side/copied_files.h"

namespace zqv {

namespace {

constexpr char kTables[] = "*.tbl";

/// Where the tables are; empty, with a line, where there are none.
bool FindTables(std::string &folder) {
  std::string data;
  if (!GetTrimmedProperty("ZQVPREVDAT", data)) {
    return false;
  }
  folder = data + "\\conv";
  bool isThere = false;
  if (IsAbsoluteFolder(data) && !AskFolder(folder, isThere)) {
    return false;
  }
  if (!isThere) {
    LogLine("No earlier conversion tables");
    folder.clear();
  }
  return true;
}

ResultCode Copy(const std::string &source) {
  std::string top;
  HeldFolder held;
  if (!FindOwnFolder(kSavedFolder, top) || !EnterOwnFolder(top, held)) {
    return ERROR_INSTALL_FAILURE;
  }
  const auto goOn = [](const std::string &) -> ResultCode { return ERROR_SUCCESS; };
  const CopySteps steps = {goOn, goOn, [](const std::string &) { SendProgress(0, kTicksPerUnit); }};
  return iwiCopyPattern(source, top + "\\conv", kTables, false, &steps);
}

}  // namespace

ResultCode BackUpConversionTables() {
  const Phase phase = AnnouncePhase();
  std::string source;
  if (phase == Phase::rollback) {
    return ERROR_SUCCESS;
  }
  if (!FindTables(source)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (phase == Phase::deferred) {
    return source.empty() ? static_cast<ResultCode>(ERROR_SUCCESS) : Copy(source);
  }
  std::string copies;
  if (!ClearOwnFolder("zqvsave\\conv", copies)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (!source.empty()) {
    PlanFiles(source + "\\" + kTables, false);
  }
  return ERROR_SUCCESS;
}

}  // namespace zqv
