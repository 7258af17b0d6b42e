#include <string>

#include "base/text.h"
#include "features/answers/response_property.h"
#include "init/primary/sections.h"
#include "previous/previous_installation.h"
#include "runtime/property.h"

namespace zqv {

bool PublishMigration(Facts & /*facts*/) { return SetSwitch("ZQVMIGRATE", FindPreviousInstallation().exists); }

bool PublishDataRetention(Facts & /*facts*/) {
  std::string queueManagers;
  std::string web;
  if (!GetPropertyWithResponse("KEEPQMDATA", queueManagers)) {
    return false;
  }
  const char *fate = EqualNoCase(queueManagers, "delete") ? "delete" : "keep";
  if (!SetProperties({{"ZQVLEAVEQMDATAINSTALL", fate}, {"ZQVLEAVEQMDATAREMOVE", fate}}) ||
      !GetProperty("KEEPWEBDATA", web)) {
    return false;
  }
  // Deliberate: here the letters' case matters.
  return SetProperty("ZQVLEAVEWEBDATAINSTALL", web == "delete" ? "delete" : "keep");
}

}  // namespace zqv
