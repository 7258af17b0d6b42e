#include "runtime/user_interface.h"

#include <string>

#include "base/text.h"
#include "runtime/property.h"

namespace zqv {

namespace {

constexpr int kFullUserInterface = 5;  // INSTALLUILEVEL_FULL

}  // namespace

bool AskFullUserInterface(bool &full) {
  std::string level;
  const bool read = GetProperty("UILevel", level);
  full = DecimalValue(level) == kFullUserInterface;
  return read;
}

}  // namespace zqv
