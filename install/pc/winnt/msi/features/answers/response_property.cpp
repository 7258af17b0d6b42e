#include "features/answers/response_property.h"

#include "features/answers/response_file.h"
#include "runtime/log.h"
#include "runtime/message.h"
#include "runtime/property.h"

namespace zqv {

namespace {

constexpr char kStanza[] = "Response";

struct State {
  std::string path;  ///< USEINI, once read
  bool noResponseFile = false;
};
constinit LoadState<State> state;

void ShowUnreadable(const std::string &path) {
  std::string format;
  if (iwiLoadNlsString(format, message::kResponseFileUnreadable) == 0) {
    return;
  }
  std::string text;
  FormatInserts(text, format, path.c_str());
  iiiDisplayMsgBox(text, MB_ICONERROR);
}

}  // namespace

constinit LoadStateEntry &responsePropertyState = state;

UINT GetPropertyWithResponse(const char *name, std::string &value, bool *fromResponse, DWORD length) {
  value.clear();
  if (fromResponse != nullptr) {
    *fromResponse = false;
  }
  const UINT result = GetProperty(name, value, length);
  if (result != ERROR_SUCCESS || !value.empty() || state->noResponseFile) {
    return result;
  }
  if (state->path.empty()) {
    if (GetTrimmedProperty("USEINI", state->path) != ERROR_SUCCESS) {
      return ERROR_INSTALL_FAILURE;
    }
    if (state->path.empty()) {
      state->noResponseFile = true;
      return ERROR_SUCCESS;
    }
  }
  if (iwiReadResponseFile(state->path) == 0) {
    ShowUnreadable(state->path);
    return ERROR_INSTALL_FAILURE;
  }
  if (iwiGetResponseValue(false, kStanza, name, value) == 0) {
    Log("Property '%s' not defined in response file", name);
    return ERROR_SUCCESS;
  }
  Log("Property '%s', value '%s' from response file", name, value.c_str());
  if (fromResponse != nullptr) {
    *fromResponse = true;
  }
  return ERROR_SUCCESS;
}

const std::string &ResponseFilePath() { return state->path; }

}  // namespace zqv
