#include "services/tables/table_row.h"

#include "base/text.h"
#include "platform/owner.h"
#include "runtime/installer_result.h"
#include "runtime/log.h"
#include "runtime/session.h"

namespace zqv {

namespace {

ResultCode SetInteger(MSIHANDLE record, UINT index, int value, ResultCode &result) {
  const ResultCode answer = MsiRecordSetInteger(record, index + 1, value);
  const std::string shown = Format("0x%8.8lx", static_cast<unsigned long>(static_cast<UINT>(value)));
  // Deliberate: an integer's line counts the fields from 0, a text's from 1.
  Log("Field %d '%s'", static_cast<int>(index), shown.c_str());
  return iwiCheckMsiResult("MsiRecordSetInteger", shown.c_str(), answer, result);
}

ResultCode SetText(MSIHANDLE record, UINT index, const char *value, ResultCode &result) {
  const ResultCode answer = MsiRecordSetStringA(record, index + 1, value);
  const std::string text = value == nullptr ? "" : value;
  Log("Field %d %s", static_cast<int>(index + 1), text.empty() ? "NULL" : ("'" + text + "'").c_str());
  return iwiCheckMsiResult("MsiRecordSetString", text.c_str(), answer, result);
}

/// Fills and inserts a record. False when none could be made.
bool InsertRow(const TableRow &row, MSIHANDLE view, ResultCode &result) {
  const UINT fields = static_cast<UINT>(row.values.size());
  OwnedInstallerHandle record(MsiCreateRecord(fields));
  if (!record) {
    result = ERROR_INSTALL_FAILURE;
    Log("***MsiCreateRecord(%s, %d) failed", row.table, static_cast<int>(fields));
    return false;
  }
  ResultCode lastField = ERROR_SUCCESS;
  for (UINT index = 0; index < fields; ++index) {
    const FieldValue &value = row.values[index];
    lastField = value.isText ? SetText(record.Get(), index, value.text, result)
                             : SetInteger(record.Get(), index, value.integer, result);
  }
  if (lastField == ERROR_SUCCESS) {
    iwiCheckMsiResult("MsiViewModify", "MSIMODIFY_INSERT_TEMPORARY",
                      MsiViewModify(view, MSIMODIFY_INSERT_TEMPORARY, record.Get()), result);
  }
  iwiCheckMsiResult("MsiCloseHandle", "", record.Close(), result);
  return true;
}

}  // namespace

ResultCode iwiAddTableRow(const TableRow &row) {
  OwnedInstallerHandle database(MsiGetActiveDatabase(Session().handle));
  if (!database) {
    Log("***MsiGetActiveDatabase(%s) failed", row.table);
    return ERROR_INSTALL_FAILURE;
  }
  const std::string query = Format("SELECT * FROM %s", row.table);
  ResultCode result = ERROR_SUCCESS;
  bool hadRecord = false;
  OwnedInstallerHandle view;
  if (iwiCheckMsiResult("MsiDatabaseOpenView", query.c_str(),
                        MsiDatabaseOpenViewA(database.Get(), query.c_str(), view.Out()), result) == ERROR_SUCCESS) {
    hadRecord = InsertRow(row, view.Get(), result);
    iwiCheckMsiResult("MsiViewClose", "", MsiViewClose(view.Get()), result);
    view.Reset();
  }
  database.Reset();
  if (hadRecord && result == ERROR_SUCCESS) {
    Log("Table '%s' row added; %d fields", row.table, static_cast<int>(row.values.size()));
  }
  return result;
}

}  // namespace zqv
