#include "previous/old_component.h"

#include "base/in_order.h"
#include "previous/replacement.h"
#include "previous/uninstall_list.h"
#include "runtime/log.h"
#include "runtime/phase.h"
#include "runtime/property.h"
#include "services/removal/deletion_guard.h"

namespace zqv {

namespace {

constexpr OldComponentRow kComponents[] = {
    {OldComponent::server, "Server", "ZQVDELOLDSERVER", "Deleting old Server", "Server", "server"},
    {OldComponent::localClient, "Client", "ZQVDELOLDLCLIENTNT", "Deleting old Local Client", "Local Client", "lclient"},
    {OldComponent::toolkit, "Toolkit", "ZQVDELOLDTOOLKIT", "Deleting old Toolkit", "Toolkit", "toolkit"},
    {OldComponent::internetGateway, nullptr, "ZQVDELOLDINETGATEWAY", "Deleting old Internet Gateway",
     "Internet Gateway", "inetgate"},
    {OldComponent::webAdministration, nullptr, "ZQVDELOLDWEBADMIN", "Deleting old Web Administration",
     "Web Administration", "webadmin"},
    {OldComponent::libraryChm, "docs_en_us_eclipse", "ZQVDELOLDLIBRARYCHM", "Deleting old Library (chm)", "Library chm",
     "libchm"},
    {OldComponent::libraryPdf, "docs_en_us_eclipse", "ZQVDELOLDLIBRARYPDF", "Deleting old Library (pdf)", "Library pdf",
     "libpdf"},
    {OldComponent::internetJavaDocuments, "JavaMsg", "ZQVDELOLDINETJAVADOC", "Deleting old Internet Java Documents",
     "Internet Java Documents", "inetjava"},
};

static_assert(InOrder<&OldComponentRow::component>(kComponents));

}  // namespace

std::span<const OldComponentRow> OldComponents() { return kComponents; }

ResultCode DeleteOldComponent(OldComponent component) {
  if (AnnouncePhase() != Phase::scriptGeneration) {
    return ERROR_SUCCESS;
  }
  const OldComponentRow &row = kComponents[static_cast<std::size_t>(component)];
  const bool isReplaced = row.feature != nullptr && IsReplacedBy(row.feature);
  if (!HasOldComponent(row.record)) {
    Log("Not installed: '%s'", row.record);
    return ResultOf(SetProperty(row.decision, ""));
  }
  if (!PublishDecision(isReplaced, row.told, row.decision)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (!isReplaced) {
    StackOldComponent(row.record);
  }
  DeletionGuard guard;
  ProcessUninstallList(row.list, guard);
  return ERROR_SUCCESS;
}

}  // namespace zqv
