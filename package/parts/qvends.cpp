// How the user-interface sequence ends when it is no success: a sequence has one row for each such end, and there both
// the library has to clean up and a dialog has to tell the user.

#include <windows.h>

#include <msi.h>
#include <msiquery.h>

namespace {

// The dialog is not shown with less than the full user interface; the clean-up is done at every level. Neither can
// change how the sequence ends.
UINT End(MSIHANDLE install, const char *cleanUp, const char *dialog) {
  MsiDoActionA(install, cleanUp);
  MsiDoActionA(install, dialog);
  return ERROR_SUCCESS;
}

}  // namespace

extern "C" __declspec(dllexport) UINT WINAPI EndCancelled(MSIHANDLE install) {
  return End(install, "iwiCleanUpOnCancel", "CancelledDlg");
}

extern "C" __declspec(dllexport) UINT WINAPI EndFailed(MSIHANDLE install) {
  return End(install, "iwiCleanUpOnError", "FailedDlg");
}
