#include "runtime/installer_result.h"

#include "runtime/log.h"

namespace zqv {

ResultCode iwiCheckMsiResult(const char *call, const char *argument, ResultCode answer, ResultCode &result) {
  if (answer != ERROR_SUCCESS) {
    result = answer;
    Log("***%s('%s') failed (%d)", call, argument, answer);
  }
  return answer;
}

ResultCode CheckFirstFailure(const char *call, const char *argument, ResultCode answer, ResultCode &result) {
  ResultCode later = ERROR_SUCCESS;
  return iwiCheckMsiResult(call, argument, answer, result == ERROR_SUCCESS ? result : later);
}

}  // namespace zqv
