#include "runtime/record.h"

#include <string>

#include "base/result_code.h"
#include "runtime/installer_result.h"
#include "runtime/log.h"
#include "runtime/session.h"

namespace zqv {

void SetFields(MSIHANDLE record, std::initializer_list<FieldValue> fields) {
  ResultCode ignored = ERROR_SUCCESS;
  UINT number = 0;
  for (const FieldValue &field : fields) {
    const std::string shown = std::to_string(++number);
    if (field.isText) {
      iwiCheckMsiResult("MsiRecordSetString", shown.c_str(), MsiRecordSetStringA(record, number, field.text), ignored);
    } else {
      iwiCheckMsiResult("MsiRecordSetInteger", shown.c_str(), MsiRecordSetInteger(record, number, field.integer),
                        ignored);
    }
  }
}

OwnedInstallerHandle MakeRecord(std::initializer_list<FieldValue> fields) {
  OwnedInstallerHandle record(MsiCreateRecord(static_cast<UINT>(fields.size())));
  if (record) {
    SetFields(record.Get(), fields);
  } else {
    LogLine("***Unable to create record");
  }
  return record;
}

void CloseRecord(OwnedInstallerHandle &record) {
  if (record) {
    ResultCode ignored = ERROR_SUCCESS;
    iwiCheckMsiResult("MsiCloseHandle", "", record.Close(), ignored);
  }
}

void SendRecord(INSTALLMESSAGE message, std::initializer_list<FieldValue> fields) {
  OwnedInstallerHandle record = MakeRecord(fields);
  if (record) {
    MsiProcessMessage(Session().handle, message, record.Get());
    CloseRecord(record);
  }
}

}  // namespace zqv
