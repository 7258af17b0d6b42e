#pragma once

#include "init/primary/facts.h"

namespace zqv {

/// The sections of primary initialisation, by theme; init/primary/primary.cpp has their order. A section that cannot
/// read or set a property ends the action.

// machine.cpp

/// Logs the version of the operating system.
UINT LogOperatingSystem(Facts &facts);
/// Settles the temporary folder: ZQVTEMP, TempFolder by default.
UINT SettleTempFolder(Facts &facts);
/// Removes what cancelled the copying of an earlier installation.
UINT DeleteCancelMarker(Facts &facts);
/// Looks for the SupportPacs that the package cannot be installed beside: ZQVCHECKMSCS, ZQVCHECKPUBSUB.
UINT CheckSupportPacs(Facts &facts);
/// Publishes whether an earlier version is there to migrate: ZQVMIGRATE.
UINT PublishMigration(Facts &facts);

// high_contrast.cpp

/// Publishes whether the dialogs need high contrast, by choice or by the system's settings: ZQVHIGHCONTRAST.
UINT PublishHighContrast(Facts &facts);
/// Publishes what the user has chosen: ZQVSETHIGHCONTRAST.
UINT PublishHighContrastChoice(Facts &facts);

// package.cpp

/// Publishes when and from what the package was built: ZQVBUILDDATE, ZQVBUILDTIME, ZQVPACKAGECODE.
UINT PublishBuildStamp(Facts &facts);
/// Restarts the numbers of temporary files.
UINT RestartTempNumbers(Facts &facts);
/// Places the message library of the installation's language in the temporary folder. A failure does not end the
/// action, but decides its result.
UINT UnpackMessageLibrary(Facts &facts);
/// Places the language-neutral catalogue there.
UINT UnpackCatalogue(Facts &facts);

// language.cpp

/// Publishes the system's language: ZQVSYSTEMLANGUAGECODE, ZQVLANGUAGELIC.
UINT PublishSystemLanguage(Facts &facts);
/// Finds the language that a transform has given the dialogs.
UINT FindInstallationLanguage(Facts &facts);
/// Publishes the installation's language: ZQVLANGUAGECODE, ZQVLANGUAGE.
UINT PublishInstallationLanguage(Facts &facts);
/// Ends the action, with a message, when no transform has named a language.
UINT RequireLanguageTransform(Facts &facts);

// product.cpp

/// Publishes which package this is: ZQVPRODUCT.
UINT IdentifyProduct(Facts &facts);
/// Logs the states of installed servers and clients.
UINT LogRelatedProducts(Facts &facts);
/// Publishes version and release: ZQVVERSION, ZQVRELEASE.
UINT PublishVersion(Facts &facts);
/// Publishes the title of the setup's windows: ZQVSETUPTITLE.
UINT PublishSetupTitle(Facts &facts);
/// Publishes the name of the product's folder: ZQVDISKFOLDERNAME.
UINT PublishDiskFolderName(Facts &facts);
/// Publishes names in the installation's language: ZQVSNAPSERVICES, ZQVSNAPEXPLORER, ZQVSTARTFOLDER.
UINT PublishDisplayNames(Facts &facts);

// licence.cpp

/// Settles the kind of licence: ZQVLICENSETYPE, TRIALTOPROD.
UINT DetermineLicenceType(Facts &facts);
/// Takes the answer to the licence: AGREETOLICENSE, AgreeToLicense.
UINT CheckLicenceAcceptance(Facts &facts);
/// Publishes the folder of the licence texts: ZQVLICENSEPATH.
UINT PublishLicenceFolder(Facts &facts);

// options.cpp

/// Publishes USERCHOICE as ZQVUSERCHOICE.
UINT PublishUserChoice(Facts &facts);
/// Gives SAVEINI, the response file to write, a default.
UINT DefaultSaveFile(Facts &facts);
/// Settles whether the installation is administrative, and installs for all users.
UINT SettleInstallationKind(Facts &facts);
/// Publishes what is to become of the user's data: ZQVLEAVEQMDATAINSTALL, ZQVLEAVEQMDATAREMOVE, ZQVLEAVEWEBDATAINSTALL.
UINT PublishDataRetention(Facts &facts);
/// Clears what the dialogs find out later.
UINT ResetDialogFlags(Facts &facts);
/// Makes the file that SAVEINI names, to see early that it can be made.
UINT MakeSaveFile(Facts &facts);
/// Ends the action, with a message, when the file that WIZPARMFILE names is not there.
UINT CheckParameterFile(Facts &facts);
/// Publishes whether the service and the taskbar program are to be started at the end: ZQVSTARTSERVICE,
/// ZQVSTARTTASKBAR.
UINT PublishServiceStart(Facts &facts);
UINT PublishTaskbarStart(Facts &facts);

// feature_options.cpp

/// Publishes whether all of the product is removed: ZQVREMOVE.
UINT PublishRemoval(Facts &facts);
/// Gives REINSTALLMODE a default.
UINT DefaultReinstallMode(Facts &facts);
/// Ends the action, with a message, when a list of features names one that the package does not have.
UINT CheckFeatureLists(Facts &facts);

// service_level.cpp

/// Reads the service level of the product that is installed already.
UINT ReadInstalledServiceLevel(Facts &facts);
/// Checks the package's service level and publishes it: ZQVSERVICESHIPLEVEL, ZQVVRMF.
UINT PublishServiceLevel(Facts &facts);
/// Publishes the message for an older package: ZQVSERVICELEVELMESSAGE.
UINT PublishServiceLevelMessage(Facts &facts);

}  // namespace zqv
