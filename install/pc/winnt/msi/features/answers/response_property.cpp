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
  if (iwiLoadNlsString(format, message::kResponseFileUnreadable)) {
    iiiDisplayMsgBox(FillInsert(format, "%1", path), MB_ICONERROR);
  }
}

}  // namespace

constinit LoadStateEntry &responsePropertyState = state;

bool GetPropertyWithResponse(const char *name, std::string &value, bool *fromResponse, DWORD length) {
  value.clear();
  if (fromResponse != nullptr) {
    *fromResponse = false;
  }
  if (!GetProperty(name, value, length)) {
    return false;
  }
  if (!value.empty() || state->noResponseFile) {
    return true;
  }
  if (state->path.empty()) {
    if (!GetTrimmedProperty("USEINI", state->path)) {
      return false;
    }
    if (state->path.empty()) {
      state->noResponseFile = true;
      return true;
    }
  }
  if (!iwiReadResponseFile(state->path)) {
    ShowUnreadable(state->path);
    return false;
  }
  if (!iwiGetResponseValue(false, kStanza, name, value)) {
    Log("Property '%s' not defined in response file", name);
    return true;
  }
  Log("Property '%s', value '%s' from response file", name, value.c_str());
  if (fromResponse != nullptr) {
    *fromResponse = true;
  }
  return true;
}

const std::string &ResponseFilePath() { return state->path; }

}  // namespace zqv
