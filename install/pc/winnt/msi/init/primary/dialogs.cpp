#include <string>

#include "base/yes_no.h"
#include "features/answers/response_property.h"
#include "init/primary/sections.h"
#include "runtime/property.h"

namespace zqv {

bool PublishUserChoice(Facts & /*facts*/) {
  std::string choice;
  if (!GetPropertyWithResponse("USERCHOICE", choice)) {
    return false;
  }
  return SetSwitch("ZQVUSERCHOICE", !IsNo(choice));
}

bool ResetDialogFlags(Facts &facts) {
  if (facts.administrative) {
    return true;
  }
  return SetProperties({{"ZQVREINSTALLOPTIONS", "refresh"},
                        {"ZQVQVISRUNNING", ""},
                        {"ZQVPERFMONISRUNNING", ""},
                        {"ZQVPRODUCTPREREQ", "0"},
                        {"ZQVENDUI", "0"}});
}

}  // namespace zqv
