#include "completion/splash.h"

#include "running/wait.h"
#include "runtime/message.h"

namespace zqv {

namespace {

constexpr int kSplashSteps = 60;

}  // namespace

ResultCode WaitForSplash() {
  WaitInSteps(kSplashSteps, IsSplashShown);
  return ERROR_SUCCESS;
}

ResultCode StopSplash() {
  CloseSplash();
  return ERROR_SUCCESS;
}

}  // namespace zqv
