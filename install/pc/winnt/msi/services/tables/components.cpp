#include "services/tables/components.h"

#include "base/result_code.h"
#include "base/text.h"
#include "runtime/installer_result.h"
#include "runtime/log.h"
#include "runtime/session.h"
#include "runtime/table_query.h"

namespace zqv {

namespace {

struct State {
  std::string found;
};
constinit LoadState<State> state;

struct ComponentState {
  INSTALLSTATE installed = INSTALLSTATE_UNKNOWN;
  INSTALLSTATE action = INSTALLSTATE_UNKNOWN;
};

/// Both unknown, with a line, when they cannot be asked.
ComponentState AskComponentState(const std::string &key) {
  ComponentState asked;
  ResultCode ignored = ERROR_SUCCESS;
  const ResultCode code = MsiGetComponentStateA(Session().handle, key.c_str(), &asked.installed, &asked.action);
  return iwiCheckMsiResult("MsiGetComponentState", key.c_str(), code, ignored) == ERROR_SUCCESS ? asked
                                                                                                : ComponentState();
}

void Tell(const std::string &key, const ComponentState &asked) {
  Log("Component '%s' Installed: %d Action: %d", key.c_str(), static_cast<int>(asked.installed),
      static_cast<int>(asked.action));
}

/// Gives `found` the first component of those that the query's first field names, whose action state is `wanted`, and
/// tells of it. It stays as it is when there is none.
void FindComponent(const std::string &query, const char *column, INSTALLSTATE wanted, std::string &found) {
  ResultCode ignored = ERROR_SUCCESS;
  VisitRows(query.c_str(), ignored, [&](MSIHANDLE row) {
    std::string key;
    if (iwiCheckMsiResult("MsiRecordGetString", column, ReadRecordText(row, 1, key), ignored) != ERROR_SUCCESS) {
      return true;
    }
    const ComponentState asked = AskComponentState(key);
    if (asked.action != wanted) {
      return true;
    }
    Tell(key, asked);
    found = key;
    return false;
  });
}

}  // namespace

constinit LoadStateEntry &componentState = state;

const std::string &iwiFindLocalComponent(const std::string &otherwise) {
  if (state->found.empty()) {
    FindComponent("SELECT * FROM Component", "Component", INSTALLSTATE_LOCAL, state->found);
  }
  if (state->found.empty()) {
    state->found = otherwise;
  }
  return state->found;
}

INSTALLSTATE AskComponentAction(const std::string &component) {
  const ComponentState asked = AskComponentState(component);
  Tell(component, asked);
  return asked.action;
}

std::string FindAbsentComponent(const std::string &feature) {
  std::string found;
  FindComponent(Format("SELECT Component_ FROM FeatureComponents WHERE Feature_='%s'", feature.c_str()), "Component_",
                INSTALLSTATE_ABSENT, found);
  return found;
}

}  // namespace zqv
