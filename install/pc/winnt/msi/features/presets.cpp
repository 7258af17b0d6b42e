#include "features/presets.h"

#include <span>
#include <string>

#include "base/text.h"
#include "features/client_only.h"
#include "features/feature_table.h"
#include "features/install_level.h"
#include "runtime/property.h"
#include "services/tables/feature_state.h"

namespace zqv {

namespace {

constexpr int kPresetLevel = 100;

constexpr bool kLocal = true;
constexpr bool kAbsent = false;

struct Choice {
  Feature feature;
  bool local;
};

/// The choices of a setup type, in the order in which they are made.
struct Preset {
  std::span<const Choice> server;            ///< not a client-only installation
  std::span<const Choice> clientFromServer;  ///< a client-only installation of the server's package
  std::span<const Choice> client;            ///< of another package: the server's features are left alone
};

constexpr Choice kMinimumServer[] = {{Feature::Base, kLocal},        {Feature::Server, kLocal},
                                     {Feature::FTA_Server, kAbsent}, {Feature::Explorer, kAbsent},
                                     {Feature::Client, kAbsent},     {Feature::FTA_Client, kAbsent},
                                     {Feature::JavaMsg, kAbsent},    {Feature::Toolkit, kAbsent}};
constexpr Choice kMinimumClientFromServer[] = {{Feature::Base, kLocal},        {Feature::Server, kAbsent},
                                               {Feature::FTA_Server, kAbsent}, {Feature::Explorer, kAbsent},
                                               {Feature::FTA_Client, kAbsent}, {Feature::Client, kLocal},
                                               {Feature::JavaMsg, kAbsent},    {Feature::Toolkit, kAbsent}};
constexpr Choice kMinimumClient[] = {
    {Feature::Base, kLocal}, {Feature::Client, kLocal}, {Feature::JavaMsg, kAbsent}, {Feature::Toolkit, kAbsent}};
constexpr Preset kMinimum{kMinimumServer, kMinimumClientFromServer, kMinimumClient};

constexpr Choice kTypicalServer[] = {{Feature::Base, kLocal},        {Feature::Server, kLocal},
                                     {Feature::FTA_Server, kAbsent}, {Feature::Explorer, kLocal},
                                     {Feature::Client, kAbsent},     {Feature::FTA_Client, kAbsent},
                                     {Feature::Toolkit, kLocal},     {Feature::JavaMsg, kLocal}};
constexpr Choice kTypicalClientFromServer[] = {{Feature::Base, kLocal},        {Feature::Server, kAbsent},
                                               {Feature::FTA_Server, kAbsent}, {Feature::Explorer, kAbsent},
                                               {Feature::FTA_Client, kAbsent}, {Feature::Client, kLocal},
                                               {Feature::Toolkit, kLocal},     {Feature::JavaMsg, kLocal}};
constexpr Choice kTypicalClient[] = {
    {Feature::Base, kLocal}, {Feature::Client, kLocal}, {Feature::Toolkit, kLocal}, {Feature::JavaMsg, kLocal}};
constexpr Preset kTypical{kTypicalServer, kTypicalClientFromServer, kTypicalClient};

ResultCode SetFeatures(const Preset &preset) {
  std::string product;
  if (!GetTrimmedProperty("ZQVPRODUCT", product, kCounterLength)) {
    return ERROR_INSTALL_FAILURE;
  }
  // A failure is logged; the features can be set all the same.
  static_cast<void>(SetInstallLevel(kPresetLevel));
  bool clientOnly = false;
  if (!IsClientOnly(clientOnly)) {
    return ERROR_INSTALL_FAILURE;
  }
  const bool serverPackage = EqualNoCase(product, "server");
  ResultCode result = ERROR_SUCCESS;
  for (const Choice &choice : !clientOnly ? preset.server : serverPackage ? preset.clientFromServer : preset.client) {
    iwiSetFeatureLocal(NameOf(choice.feature), choice.local, result);
  }
  return result;
}

}  // namespace

ResultCode SetFeaturesMinimum() { return SetFeatures(kMinimum); }

ResultCode SetFeaturesTypical() { return SetFeatures(kTypical); }

}  // namespace zqv
