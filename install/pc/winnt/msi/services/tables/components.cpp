#include "services/tables/components.h"

#include "base/result_code.h"
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

/// False when `row` is the component that is looked for.
bool PassOver(MSIHANDLE row) {
  ResultCode ignored = ERROR_SUCCESS;
  std::string key;
  if (iwiCheckMsiResult("MsiRecordGetString", "Component", ReadRecordText(row, 1, key), ignored) != ERROR_SUCCESS) {
    return true;
  }
  INSTALLSTATE installed = INSTALLSTATE_UNKNOWN;
  INSTALLSTATE action = INSTALLSTATE_UNKNOWN;
  const ResultCode asked = MsiGetComponentStateA(Session().handle, key.c_str(), &installed, &action);
  if (iwiCheckMsiResult("MsiGetComponentState", key.c_str(), asked, ignored) != ERROR_SUCCESS ||
      action != INSTALLSTATE_LOCAL) {
    return true;
  }
  Log("Component '%s' Installed: %d Action: %d", key.c_str(), static_cast<int>(installed), static_cast<int>(action));
  state->found = key;
  return false;
}

}  // namespace

constinit LoadStateEntry &componentState = state;

const std::string &iwiFindLocalComponent(const std::string &otherwise) {
  if (state->found.empty()) {
    ResultCode ignored = ERROR_SUCCESS;
    VisitRows("SELECT * FROM Component", ignored, PassOver);
  }
  if (state->found.empty()) {
    state->found = otherwise;
  }
  return state->found;
}

}  // namespace zqv
