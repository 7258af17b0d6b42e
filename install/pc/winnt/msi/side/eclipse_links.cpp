#include "side/eclipse_links.h"

#include <vector>

#include "base/text.h"
#include "features/feature_table.h"
#include "platform/c_file.h"
#include "platform/owner.h"
#include "previous/base_component.h"
#include "runtime/log.h"
#include "runtime/progress.h"
#include "runtime/property.h"
#include "services/files/attributes.h"
#include "services/files/create.h"
#include "services/files/delete_entry.h"
#include "services/files/search.h"
#include "services/removal/deletion_guard.h"
#include "services/tables/feature_state.h"
#include "services/tables/remove_file.h"
#include "side/undoable_action.h"

namespace zqv {

namespace {

constexpr char kLanguages[] = "ZQVECLIPSELINKS";
constexpr char kTopFolder[] = "\\eclipse";
constexpr char kLinkFolder[] = "\\eclipse\\links";

std::string LinkPath(const std::string &home, std::string_view language) {
  return home + kLinkFolder + "\\zqv_" + std::string(language) + ".link";
}

/// Calls `visit` with each language that the product's documentation has, and its feature.
template <typename Visit>
void ForEachLanguage(Visit visit) {
  for (const char *feature : kFeatureNames) {
    if (const std::string_view language = DocumentationLanguageOf(feature); !language.empty()) {
      visit(language, feature);
    }
  }
}

/// True when one of the elements of a list, parted by commas, is that text.
bool IsListed(std::string_view list, std::string_view text) {
  return ("," + std::string(list) + ",").find("," + std::string(text) + ",") != std::string::npos;
}

bool StackLinks(const std::string &home) {
  DeletionGuard guard;
  if (!guard.Prepare()) {
    return false;
  }
  if (!guard.MayDeleteBelow(home) || IsFolderLink(home + kTopFolder) || IsFolderLink(home + kLinkFolder)) {
    return true;
  }
  // What cannot be stacked is logged, and stays.
  ForEachLanguage([&](std::string_view language, const char *) {
    static_cast<void>(
        DeleteOneFile({.path = LinkPath(home, language), .component = kBaseComponent, .installMode = kWhenRemoved}));
  });
  for (const char *folder : {kLinkFolder, kTopFolder}) {
    static_cast<void>(iwiStackFolderForDeletion(home + folder + "\\", kBaseComponent, kWhenRemoved));
  }
  return true;
}

ResultCode Plan() {
  std::string languages;
  int files = 0;
  bool asked = true;
  ForEachLanguage([&](std::string_view language, const char *feature) {
    bool stays = false;
    asked = asked && AskWhetherStaysLocal(feature, stays);
    ++files;
    if (stays) {
      languages += (languages.empty() ? "" : ",") + std::string(language);
    }
  });
  if (!asked || !SetProperty(kLanguages, languages)) {
    return ERROR_INSTALL_FAILURE;
  }
  AnnounceTicks(AddUnits(0, files));
  return ERROR_SUCCESS;
}

ResultCode WriteLink(const std::string &home, std::string_view language, Undo &undo) {
  const std::string path = LinkPath(home, language);
  ResultCode result = undo.KeepFolder(home + kLinkFolder);
  if (result == ERROR_SUCCESS) {
    result = undo.KeepFile(path);
  }
  if (result != ERROR_SUCCESS) {
    return result;
  }
  iwiCreateFolderTree(home + kLinkFolder + "\\");
  RemoveReadOnly(path, false);
  OwnedStream file(OpenCFile(path.c_str(), "wb"));
  const std::string line = "path=" + PropertiesValue(home + "\\docs\\" + std::string(language)) + "\r\n";
  const bool written = file && std::fputs(line.c_str(), file.Get()) >= 0;
  if (!file || file.Close() != 0 || !written) {
    Log("***Can't write '%s'", path.c_str());
    return ERROR_INSTALL_FAILURE;
  }
  Log("Wrote '%s'", path.c_str());
  return ERROR_SUCCESS;
}

ResultCode DeleteLink(const std::string &home, std::string_view language, Undo &undo) {
  const std::string path = LinkPath(home, language);
  DWORD attributes = 0;
  if (!AskAttributes(path, attributes)) {
    return ERROR_INSTALL_FAILURE;
  }
  return attributes == INVALID_FILE_ATTRIBUTES ? static_cast<ResultCode>(ERROR_SUCCESS) : undo.DeleteKept(path);
}

ResultCode Reconcile(const std::string &home, Undo &undo) {
  std::string languages;
  if (!GetProperty(kLanguages, languages)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (IsFolderLink(home + kTopFolder) || IsFolderLink(home + kLinkFolder)) {
    Log("***'%s' is or leads over a link; its files are left alone", (home + kLinkFolder).c_str());
    return ERROR_INSTALL_FAILURE;
  }
  ResultCode result = ERROR_SUCCESS;
  ForEachLanguage([&](std::string_view language, const char *) {
    if (result != ERROR_SUCCESS) {
      return;
    }
    result = IsListed(languages, language) ? WriteLink(home, language, undo) : DeleteLink(home, language, undo);
    SendProgress(0, kTicksPerUnit);
  });
  for (const char *folder : {kLinkFolder, kTopFolder}) {
    if (result == ERROR_SUCCESS) {
      result = undo.RemoveEmptyFolder(home + folder);
    }
  }
  return result;
}

}  // namespace

ResultCode ReconcileEclipseLinks() {
  return RunUndoable({.undoName = "links",
                      .stackRemoval = StackLinks,
                      .plan = [](const std::string &) { return Plan(); },
                      .execute = Reconcile});
}

std::string PropertiesValue(std::string_view value) {
  std::vector<WCHAR> wide(value.size());  // no code page needs more units than bytes
  const int length = static_cast<int>(value.size());
  const int units = length == 0 ? 0 : MultiByteToWideChar(CP_ACP, 0, value.data(), length, wide.data(), length);
  std::string text;
  for (int at = 0; at < units; ++at) {
    const WCHAR unit = wide[static_cast<std::size_t>(at)];
    if (unit < 0x20 || unit > 0x7E) {
      text += Format("\\u%04X", static_cast<unsigned>(unit));
      continue;
    }
    const char c = static_cast<char>(unit);
    const bool isEscaped = std::string_view(":=#!\\").find(c) != std::string_view::npos || (c == ' ' && text.empty());
    text += isEscaped ? std::string("\\") + c : std::string(1, c);
  }
  return text;
}

}  // namespace zqv
