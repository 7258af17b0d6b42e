#pragma once

#include "base/result_code.h"
#include "platform/msi.h"

namespace zqv {

/// The state that a feature is in, and the one that the installer brings it to.
struct FeatureState {
  INSTALLSTATE installed = INSTALLSTATE_UNKNOWN;
  INSTALLSTATE action = INSTALLSTATE_UNKNOWN;
};

/// Asks for a feature's states and logs them. Of a feature that the package does not have both are unknown. So they are
/// after another failure; where `failure` is given, it gets its code instead of a line, and is untouched otherwise.
FeatureState AskFeatureState(const char *feature, ResultCode *failure = nullptr);

/// True when a feature is local once the installation is over: by the state that the installer brings it to, or, where
/// that is none, by the one that it is in.
bool StaysLocal(const char *feature);

/// Finds that out; false, with a line, when the installer cannot tell. Of a feature that the package does not have it
/// is false that it stays.
[[nodiscard]] bool AskWhetherStaysLocal(const char *feature, bool &stays);

/// Sets the state that the installer is to bring a feature to. False when it cannot be set.
[[nodiscard]] bool iwiSetFeatureState(const char *feature, INSTALLSTATE state);

/// Sets a feature to be installed locally, or else to be absent. A failure is stored in `result`, a success leaves it
/// alone, so that one result can follow a whole series.
void iwiSetFeatureLocal(const char *feature, bool local, ResultCode &result);

}  // namespace zqv
