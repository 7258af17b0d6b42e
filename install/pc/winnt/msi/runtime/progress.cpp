#include "runtime/progress.h"

#include "platform/owner.h"
#include "runtime/installer_result.h"
#include "runtime/log.h"
#include "runtime/session.h"

namespace {

// The fields of a progress record, as the platform's documentation of MsiProcessMessage has them.
constexpr UINT kProgressFields = 3;
constexpr int kProgressIncrement = 2;

}  // namespace

UINT SendProgress(MSIHANDLE record, int ticks) {
  if (!InRunMode(MSIRUNMODE_SCHEDULED)) {
    return ERROR_SUCCESS;
  }
  OwnedInstallerHandle own;
  if (record == 0) {
    own.Reset(MsiCreateRecord(kProgressFields));
    if (!own) {
      Log("***Unable to create record");
      return ERROR_SUCCESS;
    }
    record = own.Get();
    UINT ignored = ERROR_SUCCESS;
    iwiCheckMsiResult("MsiRecordSetInteger", "1", MsiRecordSetInteger(record, 1, kProgressIncrement), ignored);
    iwiCheckMsiResult("MsiRecordSetInteger", "2", MsiRecordSetInteger(record, 2, ticks), ignored);
    iwiCheckMsiResult("MsiRecordSetInteger", "3", MsiRecordSetInteger(record, 3, 0), ignored);
  }
  MsiProcessMessage(Session().handle, INSTALLMESSAGE_PROGRESS, record);
  return ERROR_SUCCESS;
}

UINT SendActionData(const std::string &text) {
  if (!InRunMode(MSIRUNMODE_SCHEDULED)) {
    return ERROR_SUCCESS;
  }
  const OwnedInstallerHandle record(MsiCreateRecord(1));
  if (!record) {
    Log("***Unable to create record");
    return ERROR_SUCCESS;
  }
  UINT ignored = ERROR_SUCCESS;
  iwiCheckMsiResult("MsiRecordSetString", "1", MsiRecordSetStringA(record.Get(), 1, text.c_str()), ignored);
  MsiProcessMessage(Session().handle, INSTALLMESSAGE_ACTIONDATA, record.Get());
  return ERROR_SUCCESS;
}
