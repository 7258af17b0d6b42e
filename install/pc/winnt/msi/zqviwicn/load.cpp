#include "zqviwicn/load.h"

#include <iterator>

#include "features/answers/response_file.h"
#include "features/answers/response_property.h"
#include "features/install_level.h"
#include "init/primary/feature_options.h"
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

struct Module {
  void (*begin)();
  void (*end)();
};

/// Lower modules come first.
constexpr Module kModules[] = {
    {BeginSession, EndSession},
    {BeginPropertySource, EndPropertySource},
    {BeginLog, EndLog},
    {BeginPathProperties, EndPathProperties},
    {BeginMessages, EndMessages},
    {BeginResponseFile, EndResponseFile},
    {BeginResponseProperties, EndResponseProperties},
    {BeginComponents, EndComponents},
    {BeginProducts, EndProducts},
    {BeginInstallLevel, EndInstallLevel},
    {BeginPreviousInstallation, EndPreviousInstallation},
    {BeginFeatureOptions, EndFeatureOptions},
    {BeginDocumentationScan, EndDocumentationScan},
    {BeginFrame, EndFrame},
};

}  // namespace

void Load() {
  for (const Module &module : kModules) {
    module.begin();
  }
}

void Unload() {
  for (auto module = std::rbegin(kModules); module != std::rend(kModules); ++module) {
    module->end();
  }
}

}  // namespace zqv
