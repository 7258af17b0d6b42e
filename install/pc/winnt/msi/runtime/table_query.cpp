#include "runtime/table_query.h"

#include "platform/owner.h"
#include "runtime/installer_result.h"
#include "runtime/log.h"
#include "runtime/property_source.h"
#include "runtime/session.h"

namespace zqv {

namespace {

/// More than anybody has added, so that a row which stays does not keep the deletion from ending.
constexpr int kMostDeletedRows = 1000;

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

bool Execute(MSIHANDLE view, const char *query, ResultCode &result) {
  return CheckFirstFailure("MsiViewExecute", query, MsiViewExecute(view, 0), result) == ERROR_SUCCESS;
}

/// Opens a view for `use`, and gives what that gives; false where there is no view.
bool WithView(const char *query, ResultCode &result, const std::function<bool(MSIHANDLE view)> &use) {
  OwnedInstallerHandle database(MsiGetActiveDatabase(Session().handle));
  if (!database) {
    Log("***MsiGetActiveDatabase() failed");
    result = ERROR_INSTALL_FAILURE;
    return false;
  }
  bool used = false;
  OwnedInstallerHandle view;
  const ResultCode opened = MsiDatabaseOpenViewA(database.Get(), query, view.Out());
  if (CheckFirstFailure("MsiDatabaseOpenView", query, opened, result) == ERROR_SUCCESS) {
    used = use(view.Get());
    CheckFirstFailure("MsiViewClose", "", MsiViewClose(view.Get()), result);
    Close(view, result);
  }
  Close(database, result);
  return used;
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
  return WithView(query, result, [&](MSIHANDLE view) {
    return Execute(view, query, result) && VisitExecuted(view, query, result, visit);
  });
}

bool DeleteRows(const char *query, ResultCode &result) {
  return WithView(query, result, [&](MSIHANDLE view) {
    for (int deleted = 0; deleted < kMostDeletedRows; ++deleted) {
      bool gone = false;
      const bool complete =
          Execute(view, query, result) && VisitExecuted(view, query, result, [&](MSIHANDLE row) {
            gone = CheckFirstFailure("MsiViewModify", "MSIMODIFY_DELETE", MsiViewModify(view, MSIMODIFY_DELETE, row),
                                     result) == ERROR_SUCCESS;
            return false;
          });
      if (!gone || CheckFirstFailure("MsiViewClose", "", MsiViewClose(view), result) != ERROR_SUCCESS) {
        return complete;
      }
    }
    Log("***There is no end of rows to delete: '%s'", query);
    result = ERROR_INSTALL_FAILURE;
    return false;
  });
}

}  // namespace zqv
