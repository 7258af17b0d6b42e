#pragma once

#include "base/result_code.h"

namespace zqv {

/// The licences in the program folder. The immediate pass settles where the package comes from, the deferred pass
/// copies from there; a rollback puts back what was there, a commit forgets it. Where all of the product is removed,
/// what has been copied is left to the installer. Each is the body of the exported action named beside it. They return
/// ERROR_SUCCESS; ERROR_INSTALL_FAILURE when a property cannot be read or set, a folder is invalid, the source is on a
/// mapped drive, or something cannot be copied or kept for the rollback; ERROR_INSTALL_USEREXIT when copying was
/// cancelled.

/// iwiCopyLicenseFile: the licences, with all folders below theirs, to "licenses".
ResultCode CopyLicences();

/// iwiInstallVlsm: the signature files of the licence's use, *.sig among the licences, to "licenses\sig". With a
/// licence for a beta or a trial there must be none: those in that folder are deleted instead.
ResultCode InstallSignatures();

}  // namespace zqv
