#pragma once

#include "base/result_code.h"

namespace zqv {

/// What is launched at the end of an installation. But for the data folders' program a launch never fails an
/// installation: what cannot be found or started, or does not end in time, is told. Nothing is launched in a silent
/// installation (UILevel 2) or where the dialogs take care of it (ZQVENDUI "1"), and for a client only what a client
/// has; a line says why. What is said to be the body of an action returns, unless more is said, ERROR_SUCCESS, or
/// ERROR_INSTALL_FAILURE when a property cannot be read or set.

enum class Launched {
  wizard,
  certificates,    ///< iwiLaunchZqvtcert: is waited for, a minute and a half at the most
  launchPad,       ///< iwiLaunchLaunchPad: for clients too
  readme,          ///< iwiLaunchReadme: the file that ARPREADME names, as the shell opens it; for clients too
  sslInformation,  ///< iwiLaunchSSLMoreInfoHTML: a document, as the shell opens it
  sslWizard,       ///< iwiLaunchSSLStoreWizard
  setqvscp,        ///< iwiLaunchSetqvscp
  dataFolders,
};

ResultCode Launch(Launched which);

/// The body of the exported action that is named beside its member.
template <Launched which>
ResultCode Launch() {
  return Launch(which);
}

/// iwiTestAndLaunchConfig: makes the third log "zqvmjpse.txt" in the data folder, and launches the preparation wizard
/// unless LAUNCHWIZ is a no; WIZPARMFILE, if there is one, is its argument.
ResultCode LaunchWizard();

/// iwiSetLaunchWiz: LAUNCHWIZ becomes "0" when it is a no or the installation is a client's, else "1".
ResultCode SetLaunchWizard();

/// iwiLaunchZqvMkDir: has zqvmkdir.exe make the folders of the product's data, in silent installations too, and waits
/// for its end. The immediate pass decides, which a deferred action could not: not for a client, nor when all of the
/// product is removed; ZQVMKDIR hands "1" or nothing over. In rollback there is nothing to do: what is made stays.
/// Returns ERROR_INSTALL_FAILURE also when the data folder is invalid or the program cannot be run or gives another
/// exit code than 0: the product cannot run without its folders.
ResultCode MakeDataFolders();

}  // namespace zqv
