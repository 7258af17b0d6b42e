#pragma once

#include <initializer_list>

#include "platform/owner.h"

namespace zqv {

/// The installer's records: numbered fields, from 1, of an integer or a text each.

struct FieldValue {
  FieldValue(int number) : integer(number) {}                     // NOLINT(google-explicit-constructor)
  FieldValue(const char *string) : text(string), isText(true) {}  // NOLINT(google-explicit-constructor)

  int integer = 0;
  const char *text = nullptr;  ///< null and empty both give a null field
  bool isText = false;
};

/// Sets the fields from 1 on; a failing call is logged and does not stop it.
void SetFields(MSIHANDLE record, std::initializer_list<FieldValue> fields);

/// Makes a record of these fields. No handle, after a line in the log, when that fails.
OwnedInstallerHandle MakeRecord(std::initializer_list<FieldValue> fields);

/// Closes a record, if there is one; a failure is logged.
void CloseRecord(OwnedInstallerHandle &record);

/// Hands the installer a record of these fields. Failures of making and of closing it are logged.
void SendRecord(INSTALLMESSAGE message, std::initializer_list<FieldValue> fields);

}  // namespace zqv
