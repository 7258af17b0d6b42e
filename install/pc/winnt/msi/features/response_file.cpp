#include "features/response_file.h"

#include <map>

#include "platform/c_file.h"
#include "platform/owner.h"
#include "runtime/load_state.h"
#include "runtime/log.h"
#include "runtime/pair_list.h"
#include "runtime/text.h"
#include "services/environment.h"

namespace {

/// A line's longest piece, terminator included; longer lines are read in pieces.
constexpr int kLineLength = 516;

/// The keywords of a stanza. Those that differ in case only stand together, newest first, as keyword and value.
using Stanza = std::map<std::string, iwiPAIRLIST, LessNoCase>;

struct State {
  /// By name. A name that occurs again hides its earlier stanza completely, so only the newest is kept.
  std::map<std::string, Stanza, LessNoCase> stanzas;
  Stanza *newest = nullptr;
};
LoadState<State> state;

bool AddStanza(std::string_view name) {
  state->newest = &state->stanzas[std::string(name)];
  state->newest->clear();
  if (name.empty()) {
    Log("No stanza name");
  }
  return !name.empty();
}

/// The value without its blanks, one leading double quote, and the double quotes and blanks at its end.
std::string BareValue(std::string_view value) {
  value = StripBlanks(value);
  if (value.starts_with('"')) {
    value.remove_prefix(1);
  }
  while (!value.empty() && (IsBlank(value.back()) || value.back() == '"')) {
    value.remove_suffix(1);
  }
  return std::string(value);
}

/// Cuts a line into keyword and value; false when it has neither form.
bool SplitKeywordLine(std::string_view line, std::string &keyword, std::string &value) {
  const std::string_view bare = StripBlanks(line);
  if (bare.starts_with('/') || bare.starts_with('-')) {
    keyword = StripBlanks("-" + std::string(bare.substr(1, 1)));
    value = BareValue(bare.substr(std::min<std::size_t>(2, bare.size())));
    return true;
  }
  const std::size_t equals = line.find('=');
  if (equals == std::string_view::npos) {
    return false;
  }
  keyword = StripBlanks(line.substr(0, equals));
  value = BareValue(line.substr(equals + 1));
  return true;
}

bool Expand(std::string &value) {
  const Expansion expansion = ExpandReferences(value);
  switch (expansion.outcome) {
    case Expansion::done:
      return true;
    case Expansion::noMemory:
      Log("***Can't allocate memory for expanded variables in '%s'", value.c_str());
      return false;
    case Expansion::failed:
      Log("***Unable to expand environment strings (code %d) for '%s'", expansion.code, value.c_str());
      return false;
  }
  return false;
}

bool AddKeyword(std::string_view line) {
  std::string keyword;
  std::string value;
  if (!SplitKeywordLine(line, keyword, value)) {
    Log("No parameter definition in line");
  }
  if (keyword.empty()) {
    Log("No keyword in line");
    return false;
  }
  if (!Expand(value)) {
    return false;
  }
  if (state->newest == nullptr) {
    Log("No stanza");
    return false;
  }
  (*state->newest)[keyword].push_front({keyword, value});
  return true;
}

/// False when the line is bad.
bool LoadLine(std::string_view line) {
  const std::string_view bare = StripBlanks(line);
  if (bare.empty() || line.front() == ';' || line.front() == '#') {
    return true;
  }
  if (bare.front() == '[') {
    const std::string_view name = line.substr(line.find('[') + 1);
    return AddStanza(name.substr(0, name.find(']')));
  }
  return AddKeyword(line);
}

}  // namespace

void BeginResponseFile() {
  state.Begin();
}

void EndResponseFile() {
  state.End();
}

int iwiReadResponseFile(const std::string &path) {
  if (!state->stanzas.empty()) {
    return 1;
  }
  const OwnedStream file(OpenCFile(path.c_str(), "rt"));
  if (!file) {
    Log("***Can't open '%s'", path.c_str());
    return 0;
  }
  bool good = true;
  char line[kLineLength];
  while (std::fgets(line, kLineLength, file.Get()) != nullptr) {
    good = LoadLine(CutAtLineBreak(line)) && good;
  }
  if (std::ferror(file.Get()) != 0) {
    Log("***Can't read '%s'", path.c_str());
    good = false;
  }
  return good ? 1 : 0;
}

int iwiGetResponseValue(bool exactCase, const std::string &stanza, const std::string &keyword, std::string &value) {
  value.clear();
  const auto foundStanza = state->stanzas.find(stanza);
  if (foundStanza == state->stanzas.end()) {
    return 0;
  }
  const auto found = foundStanza->second.find(keyword);
  if (found == foundStanza->second.end()) {
    return 0;
  }
  for (const iwiPAIR &line : found->second) {
    if (!exactCase || line.first == keyword) {
      value = line.second;
      return 1;
    }
  }
  return 0;
}
