#pragma once

#include <string>

#include "platform/win32.h"

namespace zqv {

/// How log lines show a failing call's code: "ERROR_ACCESS_DENIED", or any other one as a decimal number.
inline std::string ErrorText(LONG error) {
  return error == ERROR_ACCESS_DENIED ? "ERROR_ACCESS_DENIED" : std::to_string(error);
}

}  // namespace zqv
