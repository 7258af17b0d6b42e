#pragma once

#include <optional>
#include <string>

#include "base/result_code.h"
#include "platform/win32.h"

namespace zqv {

/// What the sections of primary initialisation learn for those after them.
struct Facts {
  /// Of the action, unless a section ends it; a failed section that does not is kept here.
  ResultCode result = ERROR_SUCCESS;
  bool administrative = false;  ///< the installation only lays out an image of the package
  bool testRun = false;         ///< the package is the test package

  char systemLetter = 'a';      ///< the letter of the system's language
  char letter = 'a';            ///< the letter of the installation's language
  const char *language = "";    ///< its English name
  bool transformFound = false;  ///< a language transform has named it
  std::string licenceType;      ///< "production", "trial" or "beta"
  std::string version;          ///< of the package, as "6"
  std::string release;          ///< of the package, as "0"
  std::string highContrast;     ///< HIGHCONTRAST: what the user has asked for

  std::optional<bool> clientOnly;  ///< use AskClientOnly
};

/// A section: one step of primary initialisation. False ends the action, as a failure.
using Section = bool (*)(Facts &facts);

/// As IsClientOnly, which is asked once.
[[nodiscard]] bool AskClientOnly(Facts &facts, bool &clientOnly);

}  // namespace zqv
