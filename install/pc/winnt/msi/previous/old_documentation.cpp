#include "previous/old_documentation.h"

#include <string>

#include "base/in_order.h"
#include "platform/own_module.h"
#include "previous/documentation_scan.h"
#include "previous/replacement.h"
#include "previous/uninstall_list.h"
#include "runtime/log.h"
#include "runtime/phase.h"
#include "services/removal/deletion_guard.h"

namespace zqv {

namespace {

/// The string table holds the display names of the earlier version's components, a block of ids for each language of
/// its user interface.
constexpr UINT kBlocks = 10;
constexpr UINT kBlockLength = 20;
constexpr int kDisplayNameLength = 516;

struct Member {
  OldDocumentation language;
  const char *code;
  const char *decision;  ///< the property: "1" where the old documentation goes, else empty
  const char *told;
  const char *languageValue;
  UINT slot;      ///< of the display names, in each block
  bool pdfFirst;  ///< the order of the lists: PDF and HTML, or the other way round
};

// Deliberate: German tests the English value and slot, Italian and Japanese tell of English documents, and simplified
// Chinese of traditional.
constexpr Member kMembers[] = {
    {OldDocumentation::deDe, "de_de", "ZQVDELOLDDEDE", "Deleting old Additional German Documents",
     "Additional Languages\\en_us", 10, true},
    {OldDocumentation::enUs, "en_us", "ZQVDELOLDENUS", "Deleting old Additional English Documents",
     "Additional Languages\\en_us", 10, false},
    {OldDocumentation::esEs, "es_es", "ZQVDELOLDESES", "Deleting old Additional Spanish Documents",
     "Additional Languages\\es_es", 13, false},
    {OldDocumentation::frFr, "fr_fr", "ZQVDELOLDFRFR", "Deleting old Additional French Documents",
     "Additional Languages\\fr_fr", 11, false},
    {OldDocumentation::itIt, "it_it", "ZQVDELOLDITIT", "Deleting old Additional English Documents",
     "Additional Languages\\it_it", 14, false},
    {OldDocumentation::jaJp, "ja_jp", "ZQVDELOLDJAJP", "Deleting old Additional English Documents",
     "Additional Languages\\ja_jp", 15, false},
    {OldDocumentation::koKr, "ko_kr", "ZQVDELOLDKOKR", "Deleting old Additional Korean Documents",
     "Additional Languages\\ko_kr", 16, true},
    {OldDocumentation::ptBr, "pt_br", "ZQVDELOLDPTBR", "Deleting old Additional Brazilian Portuguese Documents",
     "Additional Languages\\pt_br", 18, false},
    {OldDocumentation::zhCn, "zh_cn", "ZQVDELOLDZHCN", "Deleting old Additional Traditional Chinese Documents",
     "Additional Languages\\zh_cn", 19, true},
    {OldDocumentation::zhTw, "zh_tw", "ZQVDELOLDZHTW", "Deleting old Additional Traditional Chinese Documents",
     "Additional Languages\\zh_tw", 17, false},
};

static_assert(InOrder<&Member::language>(kMembers));

void StackValueIfPresent(const std::string &name) {
  if (HasOldComponent(name)) {
    StackOldComponent(name);
  }
}

void StackValues(const Member &member) {
  for (UINT block = 0; block < kBlocks; ++block) {
    const UINT id = kBlockLength * block + member.slot;
    char name[kDisplayNameLength];
    SetLastError(ERROR_SUCCESS);  // which an empty text does not change
    if (LoadStringA(OwnModule(), id, name, kDisplayNameLength) > 0) {
      StackValueIfPresent(name);
    } else {
      const DWORD error = GetLastError();
      Log("***LoadString(%u) failed (%u)", id, static_cast<unsigned>(error));
    }
  }
  StackValueIfPresent(member.languageValue);
}

void ProcessList(bool present, const char *format, const Member &member, DeletionGuard &guard) {
  if (present) {
    ProcessUninstallList(std::string(format) + member.code, guard);
  }
}

}  // namespace

std::vector<const char *> DocumentationDecisions() {
  std::vector<const char *> decisions;
  for (const Member &member : kMembers) {
    decisions.push_back(member.decision);
  }
  return decisions;
}

ResultCode DeleteOldDocumentation(OldDocumentation language) {
  if (AnnouncePhase() != Phase::scriptGeneration) {
    return ERROR_SUCCESS;
  }
  const Member &member = kMembers[static_cast<std::size_t>(language)];
  const bool isReplaced = IsReplacedBy((std::string("docs_") + member.code + "_eclipse").c_str());
  if (!PublishDecision(isReplaced, member.told, member.decision)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (!isReplaced) {
    StackValues(member);
  }
  const DocumentationFormats &formats = FindOldDocumentation();
  DeletionGuard guard;
  ProcessList(!isReplaced && formats.chm, "chm", member, guard);
  ProcessList(member.pdfFirst && formats.pdf, "pdf", member, guard);
  ProcessList(formats.htm, "htm", member, guard);
  ProcessList(!member.pdfFirst && formats.pdf, "pdf", member, guard);
  return ERROR_SUCCESS;
}

}  // namespace zqv
