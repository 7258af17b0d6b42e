#include <string>

#include "base/path.h"
#include "features/answers/response_property.h"
#include "init/primary/sections.h"
#include "runtime/message.h"
#include "services/files/existence.h"

namespace zqv {

bool CheckParameterFile(Facts & /*facts*/) {
  std::string path;
  if (!GetPropertyWithResponse("WIZPARMFILE", path)) {
    return false;
  }
  if (path.empty() || iwiFileExists(iwiTidyPath(kWithoutBackslash, path))) {
    return true;
  }
  const std::string format = NlsText(message::kResponseFileUnreadable, "Can't open file '%s'. (ZQV4734)");
  iiiDisplayMsgBox(FillInsert(format, "%1", path), MB_ICONERROR);
  return false;
}

}  // namespace zqv
