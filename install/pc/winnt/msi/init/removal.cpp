#include "init/removal.h"

#include <string>

#include "base/text.h"
#include "runtime/property.h"

namespace zqv {

namespace {

/// REMOVE; empty until read.
constinit LoadState<std::string> removal;

}  // namespace

constinit LoadStateEntry &removalState = removal;

bool PublishWholeRemoval() {
  if (removal->empty() && !GetProperty("REMOVE", *removal, kNameListLength)) {
    return false;
  }
  return SetProperty("ZQVREMOVE", EqualNoCase(*removal, "all") ? "1" : "0");
}

bool RepublishWholeRemoval() {
  removal->clear();
  return PublishWholeRemoval();
}

}  // namespace zqv
