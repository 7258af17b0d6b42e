#include "services/table_query.h"

#include "platform/owner.h"
#include "runtime/installer_result.h"
#include "runtime/log.h"
#include "runtime/property_source.h"
#include "runtime/session.h"

namespace {

bool VisitExecuted(MSIHANDLE view, const char *query, UINT &result, const std::function<bool(MSIHANDLE)> &visit) {
  for (;;) {
    OwnedInstallerHandle row;
    const UINT fetched = MsiViewFetch(view, row.Out());
    if (fetched == ERROR_NO_MORE_ITEMS) {
      return true;
    }
    if (iwiCheckMsiResult("MsiViewFetch", query, fetched, result) != ERROR_SUCCESS || !visit(row.Get())) {
      return false;
    }
  }
}

}  // namespace

UINT ReadRecordText(MSIHANDLE record, UINT field, std::string &text) {
  text.clear();
  char buffer[kLongLength];
  DWORD length = kLongLength;
  const UINT code = MsiRecordGetStringA(record, field, buffer, &length);
  if (code == ERROR_SUCCESS) {
    text.assign(buffer, length);
  }
  return code;
}

bool VisitRows(const char *query, UINT &result, const std::function<bool(MSIHANDLE row)> &visit) {
  const OwnedInstallerHandle database(MsiGetActiveDatabase(Session().handle));
  if (!database) {
    result = ERROR_INSTALL_FAILURE;
    Log("***MsiGetActiveDatabase() failed");
    return false;
  }
  OwnedInstallerHandle view;
  if (iwiCheckMsiResult("MsiDatabaseOpenView", query, MsiDatabaseOpenViewA(database.Get(), query, view.Out()),
                        result) != ERROR_SUCCESS) {
    return false;
  }
  const bool complete =
      iwiCheckMsiResult("MsiViewExecute", query, MsiViewExecute(view.Get(), 0), result) == ERROR_SUCCESS &&
      VisitExecuted(view.Get(), query, result, visit);
  iwiCheckMsiResult("MsiViewClose", "", MsiViewClose(view.Get()), result);
  return complete;
}
