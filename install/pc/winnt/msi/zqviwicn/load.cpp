#include "zqviwicn/load.h"

#include <array>
#include <new>

#include "features/answers/response_file.h"
#include "features/answers/response_property.h"
#include "features/install_level.h"
#include "init/removal.h"
#include "previous/documentation_scan.h"
#include "previous/previous_installation.h"
#include "runtime/frame.h"
#include "runtime/log.h"
#include "runtime/message.h"
#include "runtime/path_property.h"
#include "runtime/property_source.h"
#include "runtime/session.h"
#include "services/tables/components.h"
#include "services/tables/products.h"

namespace zqv {

namespace {

/// Lower modules come first.
auto States() {
  return std::array{&sessionState,
                    &propertySourceState,
                    &logState,
                    &pathPropertyState,
                    &messageState,
                    &responseFileState,
                    &responsePropertyState,
                    &componentState,
                    &productState,
                    &installLevelState,
                    &previousInstallationState,
                    &removalState,
                    &documentationScanState,
                    &frameState};
}

std::size_t begun = 0;  ///< how many of them there are now

}  // namespace

bool Load() noexcept {
  const auto states = States();
  try {
    for (; begun < states.size(); ++begun) {
      states[begun]->Begin();
    }
  } catch (const std::bad_alloc &) {
    Unload();
    return false;
  }
  return true;
}

void Unload() noexcept {
  const auto states = States();
  while (begun > 0) {
    states[--begun]->End();
  }
}

void UnloadAtProcessEnd() noexcept {
  const auto states = States();
  for (std::size_t at = 0; at < begun; ++at) {
    states[at]->Abandon();
  }
  Unload();
}

}  // namespace zqv
