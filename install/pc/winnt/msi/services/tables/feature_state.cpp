#include "services/tables/feature_state.h"

#include <string>

#include "base/text.h"
#include "runtime/log.h"
#include "runtime/session.h"

namespace zqv {

namespace {

constexpr UINT kUnknownFeature = 1606;  // ERROR_UNKNOWN_FEATURE

struct StateName {
  INSTALLSTATE state;
  const char *name;
};
constexpr StateName kStateNames[] = {
    {INSTALLSTATE_UNKNOWN, "INSTALLSTATE_UNKNOWN"}, {INSTALLSTATE_ADVERTISED, "INSTALLSTATE_ADVERTISED"},
    {INSTALLSTATE_ABSENT, "INSTALLSTATE_ABSENT"},   {INSTALLSTATE_LOCAL, "INSTALLSTATE_LOCAL"},
    {INSTALLSTATE_SOURCE, "INSTALLSTATE_SOURCE"},
};

std::string NameOf(INSTALLSTATE state) {
  for (const StateName &known : kStateNames) {
    if (known.state == state) {
      return known.name;
    }
  }
  return Format("%8.8lx", static_cast<unsigned long>(static_cast<UINT>(state)));
}

bool StaysLocal(const FeatureState &state) {
  const bool isChanged = state.action != INSTALLSTATE_UNKNOWN && state.action != INSTALLSTATE_BROKEN;
  return (isChanged ? state.action : state.installed) == INSTALLSTATE_LOCAL;
}

}  // namespace

FeatureState AskFeatureState(const char *feature, ResultCode *failure) {
  FeatureState state;
  const ResultCode code = MsiGetFeatureStateA(Session().handle, feature, &state.installed, &state.action);
  if (code != ERROR_SUCCESS) {
    state = {};
  }
  if (code != ERROR_SUCCESS && code != kUnknownFeature && failure != nullptr) {
    *failure = code;
  } else {
    Log("'%s' Installed: %d Action: %d", feature, state.installed, state.action);
  }
  return state;
}

bool StaysLocal(const char *feature) { return StaysLocal(AskFeatureState(feature)); }

bool AskWhetherStaysLocal(const char *feature, bool &stays) {
  ResultCode failure = ERROR_SUCCESS;
  stays = StaysLocal(AskFeatureState(feature, &failure));
  if (failure != ERROR_SUCCESS) {
    Log("***MsiGetFeatureState(%s) error %d", feature, static_cast<int>(failure));
  }
  return failure == ERROR_SUCCESS;
}

bool iwiSetFeatureState(const char *feature, INSTALLSTATE state) {
  const std::string name = NameOf(state);
  const ResultCode code = MsiSetFeatureStateA(Session().handle, feature, state);
  if (code != ERROR_SUCCESS) {
    Log("***MsiSetFeatureState(%s, %s) rc: 0x%8.8lx", feature, name.c_str(), static_cast<unsigned long>(code));
    return false;
  }
  Log("'%s' feature state set to %s", feature, name.c_str());
  return true;
}

void iwiSetFeatureLocal(const char *feature, bool local, ResultCode &result) {
  if (!iwiSetFeatureState(feature, local ? INSTALLSTATE_LOCAL : INSTALLSTATE_ABSENT)) {
    result = ERROR_INSTALL_FAILURE;
  }
}

}  // namespace zqv
