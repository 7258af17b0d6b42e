#include "licence/agreement.h"

#include <string>

#include "features/answers/licence.h"
#include "platform/msi.h"
#include "runtime/log.h"
#include "runtime/message.h"
#include "runtime/property.h"
#include "runtime/session.h"
#include "runtime/user_interface.h"

namespace zqv {

namespace {

constexpr char kFallback[] = "To install silently, accept the licence: set AGREETOLICENSE to yes.";

}  // namespace

ResultCode CheckAgreement() {
  std::string installed;
  if (!GetProperty("Installed", installed)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (!installed.empty() || InRunMode(MSIRUNMODE_ADMIN)) {
    LogLine("Not the first installation, or an administrative one; the licence is not asked about");
    return ERROR_SUCCESS;
  }
  bool dialogsAsk = false;
  if (!AskFullUserInterface(dialogsAsk)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (dialogsAsk) {
    LogLine("The dialogs ask about the licence");
    return ERROR_SUCCESS;
  }
  std::string answer;
  bool agreed = false;
  if (!TakeAgreement(answer, agreed)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (!agreed) {
    iiiDisplayMsgBox(NlsText(message::kNoAgreement, kFallback), MB_ICONERROR);
    TellUnacceptable(answer);
  }
  return ResultOf(agreed);
}

}  // namespace zqv
