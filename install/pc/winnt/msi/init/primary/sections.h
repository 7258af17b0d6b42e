#pragma once

#include "init/primary/facts.h"

namespace zqv {

/// The sections of primary initialisation, by theme; init/primary/primary.cpp has their order. A section that cannot
/// read or set a property ends the action.

// operating_system.cpp

/// Logs the version of the operating system.
bool LogOperatingSystem(Facts &facts);

// temp_folder.cpp

/// Settles the temporary folder: ZQVTEMP, TempFolder by default.
bool SettleTempFolder(Facts &facts);
/// Restarts the numbers of temporary files.
bool RestartTempNumbers(Facts &facts);
/// Removes what cancelled the copying of an earlier installation.
bool DeleteCancelMarker(Facts &facts);

// support_pacs.cpp

/// Looks for the SupportPacs that the package cannot be installed beside: ZQVCHECKMSCS, ZQVCHECKPUBSUB.
bool CheckSupportPacs(Facts &facts);

// installation_kind.cpp

/// Settles whether the installation is administrative, and installs for all users.
bool SettleInstallationKind(Facts &facts);

// high_contrast.cpp

/// Publishes whether the dialogs need high contrast, by choice or by the system's settings: ZQVHIGHCONTRAST.
bool PublishHighContrast(Facts &facts);
/// Publishes what the user has chosen: ZQVSETHIGHCONTRAST.
bool PublishHighContrastChoice(Facts &facts);

// package.cpp

/// Publishes when and from what the package was built: ZQVBUILDDATE, ZQVBUILDTIME, ZQVPACKAGECODE.
bool PublishBuildStamp(Facts &facts);
/// Places the message library of the installation's language in the temporary folder. A failure does not end the
/// action, but decides its result.
bool UnpackMessageLibrary(Facts &facts);
/// Places the language-neutral catalogue there.
bool UnpackCatalogue(Facts &facts);

// language.cpp

/// Publishes the system's language: ZQVSYSTEMLANGUAGECODE, ZQVLANGUAGELIC.
bool PublishSystemLanguage(Facts &facts);
/// Finds the language that a transform has given the dialogs.
bool FindInstallationLanguage(Facts &facts);
/// Publishes the installation's language: ZQVLANGUAGECODE, ZQVLANGUAGE.
bool PublishInstallationLanguage(Facts &facts);
/// Ends the action, with a message, when no transform has named a language.
bool RequireLanguageTransform(Facts &facts);

// product.cpp

/// Publishes which package this is: ZQVPRODUCT.
bool IdentifyProduct(Facts &facts);
/// Logs the states of installed servers and clients.
bool LogRelatedProducts(Facts &facts);
/// Publishes version and release: ZQVVERSION, ZQVRELEASE.
bool PublishVersion(Facts &facts);
/// Publishes the title of the setup's windows: ZQVSETUPTITLE.
bool PublishSetupTitle(Facts &facts);
/// Publishes the name of the product's folder: ZQVDISKFOLDERNAME.
bool PublishDiskFolderName(Facts &facts);
/// Publishes names in the installation's language: ZQVSNAPSERVICES, ZQVSNAPEXPLORER, ZQVSTARTFOLDER.
bool PublishDisplayNames(Facts &facts);

// licence.cpp

/// Settles the kind of licence: ZQVLICENSETYPE, TRIALTOPROD.
bool DetermineLicenceType(Facts &facts);
/// Takes the answer to the licence: AGREETOLICENSE, AgreeToLicense.
bool CheckLicenceAcceptance(Facts &facts);
/// Publishes the folder of the licence texts: ZQVLICENSEPATH.
bool PublishLicenceFolder(Facts &facts);

// data_retention.cpp

/// Publishes whether an earlier version is there to migrate: ZQVMIGRATE.
bool PublishMigration(Facts &facts);
/// Publishes what is to become of the user's data: ZQVLEAVEQMDATAINSTALL, ZQVLEAVEQMDATAREMOVE, ZQVLEAVEWEBDATAINSTALL.
bool PublishDataRetention(Facts &facts);

// save_file.cpp

/// Gives SAVEINI, the response file to write, a default.
bool DefaultSaveFile(Facts &facts);
/// Makes the file that SAVEINI names, to see early that it can be made.
bool MakeSaveFile(Facts &facts);

// parameter_file.cpp

/// Ends the action, with a message, when the file that WIZPARMFILE names is not there.
bool CheckParameterFile(Facts &facts);

// dialogs.cpp

/// Publishes USERCHOICE as ZQVUSERCHOICE.
bool PublishUserChoice(Facts &facts);
/// Clears what the dialogs find out later.
bool ResetDialogFlags(Facts &facts);

// start_at_end.cpp

/// Publishes whether the service and the taskbar program are to be started at the end: ZQVSTARTSERVICE,
/// ZQVSTARTTASKBAR.
bool PublishServiceStart(Facts &facts);
bool PublishTaskbarStart(Facts &facts);

// feature_options.cpp

/// Publishes whether all of the product is removed: ZQVREMOVE.
bool PublishRemoval(Facts &facts);
/// Gives REINSTALLMODE a default.
bool DefaultReinstallMode(Facts &facts);
/// Ends the action, with a message, when a list of features names one that the package does not have.
bool CheckFeatureLists(Facts &facts);

// service_level.cpp

/// Logs the service level of the product that is installed already.
bool LogInstalledServiceLevel(Facts &facts);
/// Checks the package's service level and publishes it: ZQVSERVICESHIPLEVEL, ZQVVRMF.
bool PublishServiceLevel(Facts &facts);
/// Publishes the message for an older package: ZQVSERVICELEVELMESSAGE.
bool PublishServiceLevelMessage(Facts &facts);

}  // namespace zqv
