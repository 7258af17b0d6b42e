#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/msi.h"
#include "platform/owner.h"
#include "services/tables/table_row.h"

/// What both parts of the figures need: floors in bare calls of the installer.

/// Figures of what has failed are none.
inline void Expect(bool good, const char *operation) {
  if (!good) {
    std::fprintf(stderr, "%s has failed\n", operation);
    std::exit(1);
  }
}

/// Writes a line to the installer's log.
inline void BareMessage(MSIHANDLE session, const std::string &line) {
  const MSIHANDLE record = MsiCreateRecord(1);
  MsiRecordSetStringA(record, 1, line.c_str());
  MsiProcessMessage(session, INSTALLMESSAGE_INFO, record);
  MsiCloseHandle(record);
}

/// Adds a temporary row of five fields.
inline void BareInsert(MSIHANDLE session, const std::string &key) {
  const zqv::OwnedInstallerHandle database(MsiGetActiveDatabase(session));
  zqv::OwnedInstallerHandle view;
  MsiDatabaseOpenViewA(database.Get(), "SELECT * FROM RemoveFile", view.Out());
  const zqv::OwnedInstallerHandle record(MsiCreateRecord(5));
  MsiRecordSetStringA(record.Get(), 1, key.c_str());
  MsiRecordSetStringA(record.Get(), 2, "Base");
  MsiRecordSetStringA(record.Get(), 3, "file.txt");
  MsiRecordSetStringA(record.Get(), 4, "ZQVPATHPROPERTY0");
  MsiRecordSetInteger(record.Get(), 5, 3);
  MsiViewModify(view.Get(), MSIMODIFY_INSERT_TEMPORARY, record.Get());
  MsiViewClose(view.Get());
}

/// The same by the library.
inline void Insert(const std::string &key) {
  const zqv::FieldValue values[] = {key.c_str(), "Base", "file.txt", "ZQVPATHPROPERTY0", 3};
  Expect(zqv::iwiAddTableRow({"RemoveFile", values}) == ERROR_SUCCESS, "adding a row");
}
