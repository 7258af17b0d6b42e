#include "licence/licence_folder.h"

#include "base/folder_rule.h"
#include "runtime/log.h"
#include "runtime/property.h"

namespace zqv {

namespace {

constexpr char kProperty[] = "ZQVLICENSEPATH";

}  // namespace

bool AskLicenceFolder(std::string &folder) {
  if (!GetTrimmedProperty(kProperty, folder)) {
    return false;
  }
  if (!IsPathBelow(folder)) {
    Log("***Invalid folder '%s' in '%s'", folder.c_str(), kProperty);
    return false;
  }
  return true;
}

}  // namespace zqv
