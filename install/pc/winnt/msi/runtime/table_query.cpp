#include "runtime/table_query.h"

#include "platform/owner.h"
#include "runtime/installer_result.h"
#include "runtime/log.h"
#include "runtime/property_source.h"
#include "runtime/session.h"

namespace zqv {

namespace {

void Close(OwnedInstallerHandle &handle, ResultCode &result) {
  if (handle) {
    CheckFirstFailure("MsiCloseHandle", "", handle.Close(), result);
  }
}

bool VisitExecuted(MSIHANDLE view, const char *query, ResultCode &result, const std::function<bool(MSIHANDLE)> &visit) {
  for (;;) {
    OwnedInstallerHandle row;
    const ResultCode fetched = MsiViewFetch(view, row.Out());
    if (fetched == ERROR_NO_MORE_ITEMS) {
      return true;
    }
    if (CheckFirstFailure("MsiViewFetch", query, fetched, result) != ERROR_SUCCESS) {
      return false;
    }
    const bool goOn = visit(row.Get());
    Close(row, result);
    if (!goOn) {
      return false;
    }
  }
}

}  // namespace

ResultCode ReadRecordText(MSIHANDLE record, UINT field, std::string &text) {
  text.clear();
  char buffer[kLongLength];
  DWORD length = kLongLength;
  const ResultCode code = MsiRecordGetStringA(record, field, buffer, &length);
  if (code == ERROR_SUCCESS) {
    text.assign(buffer, length);
  }
  return code;
}

bool VisitRows(const char *query, ResultCode &result, const std::function<bool(MSIHANDLE row)> &visit) {
  OwnedInstallerHandle database(MsiGetActiveDatabase(Session().handle));
  if (!database) {
    Log("***MsiGetActiveDatabase() failed");
    result = ERROR_INSTALL_FAILURE;
    return false;
  }
  bool complete = false;
  OwnedInstallerHandle view;
  const ResultCode opened = MsiDatabaseOpenViewA(database.Get(), query, view.Out());
  if (CheckFirstFailure("MsiDatabaseOpenView", query, opened, result) == ERROR_SUCCESS) {
    const ResultCode executed = MsiViewExecute(view.Get(), 0);
    complete = CheckFirstFailure("MsiViewExecute", query, executed, result) == ERROR_SUCCESS &&
               VisitExecuted(view.Get(), query, result, visit);
    CheckFirstFailure("MsiViewClose", "", MsiViewClose(view.Get()), result);
    Close(view, result);
  }
  Close(database, result);
  return complete;
}

}  // namespace zqv
