#include "services/system/pending_renames.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "base/code_page.h"
#include "base/folder_rule.h"
#include "runtime/log.h"
#include "services/system/registry.h"

namespace zqv {

namespace {

constexpr char kKey[] = "SYSTEM\\CurrentControlSet\\Control\\Session Manager";
constexpr char kValue[] = "PendingFileRenameOperations";

constexpr char kReplacing = '!';  // in front of a target that may be there already
constexpr std::string_view kNative = "\\??\\";
constexpr std::string_view kNativeShare = "UNC\\";

/// The path that a text of the value stands for, as TidiedFolder has it; empty for one that stands for none.
std::string TidiedPath(std::string_view text) {
  text.remove_prefix(text.starts_with(kReplacing) ? 1 : 0);
  if (!text.starts_with(kNative)) {
    return {};
  }
  text.remove_prefix(kNative.size());
  if (StartsWithName(text, kNativeShare)) {
    return TidiedFolder("\\\\" + std::string(text.substr(kNativeShare.size())));
  }
  return TidiedFolder(std::string(text));
}

}  // namespace

bool IsRestartOwed(const std::string &folder) {
  const std::string tidied = TidiedFolder(folder);
  std::optional<RegistryValueData> value;
  if (tidied.empty() || !ReadRegistryValue(HKEY_LOCAL_MACHINE, kKey, kValue, value) || !value) {
    return false;
  }
  // An empty text is the target of a deletion and ends nothing.
  std::string_view texts(reinterpret_cast<const char *>(value->bytes.data()), value->bytes.size());
  while (!texts.empty()) {
    const std::size_t end = std::min(texts.find('\0'), texts.size());
    const std::string text(texts.substr(0, end));
    if (StartsWithName(TidiedPath(text), tidied)) {
      Log("A restart is owed for '%s'", text.c_str());
      return true;
    }
    texts.remove_prefix(std::min(end + 1, texts.size()));
  }
  return false;
}

}  // namespace zqv
