#pragma once

#include <cstdio>
#include <initializer_list>
#include <string>

#include "platform/msi.h"
#include "platform/owner.h"

/// The floors: what an operation cannot do without, in bare calls of the platform.

/// Writes a line to the installer's log.
inline void BareMessage(MSIHANDLE session, const std::string &line) {
  const MSIHANDLE record = MsiCreateRecord(1);
  MsiRecordSetStringA(record, 1, line.c_str());
  MsiProcessMessage(session, INSTALLMESSAGE_INFO, record);
  MsiCloseHandle(record);
}

/// Opens each file, appends the line and closes it.
inline void BareAppend(std::initializer_list<std::string> files, const std::string &line) {
  for (const std::string &path : files) {
    if (std::FILE *file = std::fopen(path.c_str(), "a+")) {
      std::fprintf(file, "%s\n", line.c_str());
      std::fclose(file);
    }
  }
}

/// Adds a temporary row of these texts and of one integer behind them.
inline void BareInsert(MSIHANDLE session, const char *query, std::initializer_list<const char *> texts, int last) {
  const zqv::OwnedInstallerHandle database(MsiGetActiveDatabase(session));
  zqv::OwnedInstallerHandle view;
  MsiDatabaseOpenViewA(database.Get(), query, view.Out());
  const UINT fields = static_cast<UINT>(texts.size()) + 1;
  const zqv::OwnedInstallerHandle record(MsiCreateRecord(fields));
  UINT field = 0;
  for (const char *text : texts) {
    MsiRecordSetStringA(record.Get(), ++field, text);
  }
  MsiRecordSetInteger(record.Get(), fields, last);
  MsiViewModify(view.Get(), MSIMODIFY_INSERT_TEMPORARY, record.Get());
  MsiViewClose(view.Get());
}
