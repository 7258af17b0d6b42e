#include "init/folders/volume_label.h"

#include <string>

#include "base/code_page.h"
#include "base/path.h"
#include "platform/win32.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "services/files/source_path.h"

namespace zqv {

namespace {

/// The folder of the installation's source. Empty when it cannot be found, which is told. False when a property cannot
/// be read.
bool FindSource(std::string &folder) {
  if (!GetProperty("SourceDir", folder)) {
    return false;
  }
  if (folder.empty()) {
    std::ignore = FindSourceFolder("TARGETDIR", folder);
  }
  return true;
}

/// The root of a tidied folder: "C:\", "\\server\share\"; empty when it has none.
std::string RootOf(const std::string &folder) {
  if (folder.size() >= 3 && folder[1] == ':' && folder[2] == '\\') {
    return folder.substr(0, 3);
  }
  const std::size_t server = folder.starts_with("\\\\") ? NextBackslash(folder, 2) : std::string::npos;
  const std::size_t share = server == std::string::npos ? server : NextBackslash(folder, server + 1);
  return share == std::string::npos ? std::string() : folder.substr(0, share + 1);
}

bool HasLabel(const std::string &root, const std::string &expected) {
  // Without a root the system would tell of the current drive's volume.
  SetLastError(ERROR_INVALID_NAME);
  char label[MAX_PATH + 1] = "";
  if (root.empty() ||
      GetVolumeInformationA(root.c_str(), label, sizeof label, nullptr, nullptr, nullptr, nullptr, 0) == FALSE) {
    Log("Can't get volume label of '%s' %d", root.c_str(), static_cast<int>(GetLastError()));
    return false;
  }
  Log("Volume label of '%s' is '%s'; expected '%s'", root.c_str(), label, expected.c_str());
  return EqualName(label, expected);
}

}  // namespace

ResultCode CheckVolumeLabel() {
  std::string expected;
  if (!GetProperty("ZQVVOLUMELABEL", expected)) {
    return ERROR_INSTALL_FAILURE;
  }
  bool isRight = expected.empty();
  if (!isRight) {
    std::string source;
    if (!FindSource(source)) {
      return ERROR_INSTALL_FAILURE;
    }
    isRight = HasLabel(RootOf(iwiTidyPath(kWithBackslash, source)), expected);
  }
  return ResultOf(SetSwitch("ZQVVOLUMEOK", isRight));
}

}  // namespace zqv
