#pragma once

#include "platform/win32.h"

/// The Windows Installer operations that the library calls, as Windows' own headers declare them. On any other host
/// this header declares those same operations, and a test supplies them.

#ifdef _WIN32

#include <msi.h>
#include <msiquery.h>

#else

using MSIHANDLE = std::uint32_t;

enum INSTALLMESSAGE : int {
  INSTALLMESSAGE_INFO = 0x04000000,
  INSTALLMESSAGE_ACTIONSTART = 0x08000000,
  INSTALLMESSAGE_ACTIONDATA = 0x09000000,
  INSTALLMESSAGE_PROGRESS = 0x0A000000,
};

enum MSIRUNMODE {
  MSIRUNMODE_ADMIN = 0,
  MSIRUNMODE_ADVERTISE = 1,
  MSIRUNMODE_MAINTENANCE = 2,
  MSIRUNMODE_ROLLBACKENABLED = 3,
  MSIRUNMODE_LOGENABLED = 4,
  MSIRUNMODE_OPERATIONS = 5,
  MSIRUNMODE_REBOOTATEND = 6,
  MSIRUNMODE_REBOOTNOW = 7,
  MSIRUNMODE_SCHEDULED = 16,
  MSIRUNMODE_ROLLBACK = 17,
  MSIRUNMODE_COMMIT = 18,
};

enum INSTALLSTATE {
  INSTALLSTATE_BADCONFIG = -6,
  INSTALLSTATE_SOURCEABSENT = -4,
  INSTALLSTATE_INVALIDARG = -2,
  INSTALLSTATE_UNKNOWN = -1,
  INSTALLSTATE_BROKEN = 0,
  INSTALLSTATE_ADVERTISED = 1,
  INSTALLSTATE_ABSENT = 2,
  INSTALLSTATE_LOCAL = 3,
  INSTALLSTATE_SOURCE = 4,
  INSTALLSTATE_DEFAULT = 5,
};

enum MSIMODIFY { MSIMODIFY_DELETE = 6, MSIMODIFY_INSERT_TEMPORARY = 7 };

// NOLINTBEGIN(readability-identifier-naming): the system's own names
constexpr int MSI_NULL_INTEGER = static_cast<int>(0x80000000);

extern "C" {

UINT MsiCloseHandle(MSIHANDLE handle);

// The session.

UINT MsiGetPropertyA(MSIHANDLE session, LPCSTR name, LPSTR buffer, DWORD *length);
UINT MsiSetPropertyA(MSIHANDLE session, LPCSTR name, LPCSTR value);
BOOL MsiGetMode(MSIHANDLE session, MSIRUNMODE mode);
int MsiProcessMessage(MSIHANDLE session, INSTALLMESSAGE type, MSIHANDLE record);
UINT MsiSetFeatureStateA(MSIHANDLE session, LPCSTR feature, INSTALLSTATE state);
UINT MsiSetInstallLevel(MSIHANDLE session, int level);
UINT MsiGetFeatureStateA(MSIHANDLE session, LPCSTR feature, INSTALLSTATE *installed, INSTALLSTATE *action);
UINT MsiGetComponentStateA(MSIHANDLE session, LPCSTR component, INSTALLSTATE *installed, INSTALLSTATE *action);
UINT MsiGetSourcePathA(MSIHANDLE session, LPCSTR folder, LPSTR buffer, DWORD *length);
UINT MsiSetTargetPathA(MSIHANDLE session, LPCSTR folder, LPCSTR path);

// Records.

MSIHANDLE MsiCreateRecord(UINT fields);
UINT MsiRecordSetStringA(MSIHANDLE record, UINT field, LPCSTR value);
UINT MsiRecordSetInteger(MSIHANDLE record, UINT field, int value);
UINT MsiRecordGetStringA(MSIHANDLE record, UINT field, LPSTR buffer, DWORD *length);
int MsiRecordGetInteger(MSIHANDLE record, UINT field);
UINT MsiRecordReadStream(MSIHANDLE record, UINT field, char *buffer, DWORD *length);

// The database.

MSIHANDLE MsiGetActiveDatabase(MSIHANDLE session);
UINT MsiDatabaseOpenViewA(MSIHANDLE database, LPCSTR query, MSIHANDLE *view);
UINT MsiViewExecute(MSIHANDLE view, MSIHANDLE parameters);
UINT MsiViewFetch(MSIHANDLE view, MSIHANDLE *record);
UINT MsiViewModify(MSIHANDLE view, MSIMODIFY mode, MSIHANDLE record);
UINT MsiViewClose(MSIHANDLE view);

// The package's summary information.

UINT MsiGetSummaryInformationA(MSIHANDLE database, LPCSTR path, UINT updates, MSIHANDLE *summary);
UINT MsiSummaryInfoGetPropertyA(MSIHANDLE summary, UINT property, UINT *type, int *value, FILETIME *time, LPSTR buffer,
                                DWORD *length);

// Installed products.

UINT MsiEnumRelatedProductsA(LPCSTR upgradeCode, DWORD reserved, DWORD index, LPSTR product);
INSTALLSTATE MsiQueryProductStateA(LPCSTR product);
UINT MsiGetProductInfoA(LPCSTR product, LPCSTR attribute, LPSTR buffer, DWORD *length);

}  // extern "C"
   // NOLINTEND(readability-identifier-naming)

#endif
