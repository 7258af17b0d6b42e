#include "init/primary/primary.h"

#include "features/client_only.h"
#include "init/primary/sections.h"

namespace zqv {

namespace {

constexpr Section kSections[] = {
    LogOperatingSystem,
    PublishBuildStamp,
    RestartTempNumbers,
    IdentifyProduct,
    LogRelatedProducts,
    SettleTempFolder,
    PublishSystemLanguage,
    FindInstallationLanguage,
    UnpackMessageLibrary,
    PublishInstallationLanguage,
    RequireLanguageTransform,
    DetermineLicenceType,
    PublishVersion,
    PublishSetupTitle,
    PublishHighContrast,
    PublishHighContrastChoice,
    PublishMigration,
    PublishUserChoice,
    DeleteCancelMarker,
    DefaultSaveFile,
    CheckLicenceAcceptance,
    CheckSupportPacs,
    SettleInstallationKind,
    PublishDiskFolderName,
    PublishDataRetention,
    PublishRemoval,
    ResetDialogFlags,
    PublishDisplayNames,
    MakeSaveFile,
    DefaultReinstallMode,
    CheckFeatureLists,
    CheckParameterFile,
    UnpackCatalogue,
    PublishServiceStart,
    PublishTaskbarStart,
    LogInstalledServiceLevel,
    PublishServiceLevel,
    PublishServiceLevelMessage,
    PublishLicenceFolder,
};

}  // namespace

ResultCode InitialisePrimary() {
  Facts facts;
  for (const Section section : kSections) {
    if (!section(facts)) {
      return ERROR_INSTALL_FAILURE;
    }
  }
  return facts.result;
}

bool AskClientOnly(Facts &facts, bool &clientOnly) {
  if (!facts.clientOnly) {
    bool answer = false;
    if (!IsClientOnly(answer)) {
      return false;
    }
    facts.clientOnly = answer;
  }
  clientOnly = *facts.clientOnly;
  return true;
}

}  // namespace zqv
