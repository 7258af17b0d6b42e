#include "runtime/installer_result.h"

#include "runtime/log.h"

namespace zqv {

UINT iwiCheckMsiResult(const char *call, const char *argument, UINT answer, UINT &result) {
  if (answer != ERROR_SUCCESS) {
    result = answer;
    Log("***%s('%s') failed (%d)", call, argument, answer);
  }
  return answer;
}

UINT CheckFirstFailure(const char *call, const char *argument, UINT answer, UINT &result) {
  UINT later = ERROR_SUCCESS;
  return iwiCheckMsiResult(call, argument, answer, result == ERROR_SUCCESS ? result : later);
}

}  // namespace zqv
