#include "runtime/user_interface.h"

#include <string>

#include "base/text.h"
#include "runtime/property.h"

namespace zqv {

namespace {

constexpr int kNoUserInterface = 2;    // INSTALLUILEVEL_NONE
constexpr int kFullUserInterface = 5;  // INSTALLUILEVEL_FULL

bool AskWhether(int wanted, bool &holds) {
  std::string level;
  const bool read = GetProperty("UILevel", level);
  holds = DecimalValue(level) == wanted;
  return read;
}

}  // namespace

bool AskFullUserInterface(bool &full) { return AskWhether(kFullUserInterface, full); }

bool AskSilent(bool &silent) { return AskWhether(kNoUserInterface, silent); }

}  // namespace zqv
