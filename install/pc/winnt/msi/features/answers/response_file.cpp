#include "features/answers/response_file.h"

#include <algorithm>
#include <array>
#include <forward_list>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "base/pair_list.h"
#include "base/text.h"
#include "platform/c_file.h"
#include "platform/owner.h"
#include "runtime/log.h"
#include "services/system/environment.h"

namespace zqv {

namespace {

/// A line's longest piece, terminator included; longer lines are read in pieces.
constexpr int kLineLength = 516;

struct Stanza {
  std::string name;
  iwiPAIRLIST keywords;  ///< each is a keyword and its value
};

/// The values that a look-up may find, by their stanza's key and their own.
using Index = std::unordered_map<std::string, const std::string *>;

struct State {
  std::forward_list<Stanza> stanzas;  ///< newest first
  /// Without and with regard to the keywords' case. Each is made at its first look-up.
  std::array<Index, 2> indexes;
};
constinit LoadState<State> state;

bool AddStanza(std::string_view name) {
  state->stanzas.push_front({std::string(name), {}});
  if (name.empty()) {
    Log("No stanza name");
  }
  return !name.empty();
}

/// The value without its blanks, one leading double quote, and the double quotes and blanks at its end.
std::string BareValue(std::string_view value) {
  value = StripSpace(value);
  if (value.starts_with('"')) {
    value.remove_prefix(1);
  }
  while (!value.empty() && (IsSpace(value.back()) || value.back() == '"')) {
    value.remove_suffix(1);
  }
  return std::string(value);
}

/// Cuts a line into keyword and value; false when it has neither form.
bool SplitKeywordLine(std::string_view line, std::string &keyword, std::string &value) {
  const std::string_view bare = StripSpace(line);
  if (bare.starts_with('/') || bare.starts_with('-')) {
    keyword = StripSpace("-" + std::string(bare.substr(1, 1)));
    value = BareValue(bare.substr(std::min<std::size_t>(2, bare.size())));
    return true;
  }
  const std::size_t equals = line.find('=');
  if (equals == std::string_view::npos) {
    return false;
  }
  keyword = StripSpace(line.substr(0, equals));
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
  if (state->stanzas.empty()) {
    Log("No stanza");
    return false;
  }
  state->stanzas.front().keywords.push_front({std::move(keyword), std::move(value)});
  return true;
}

/// False when the line is bad.
bool LoadLine(std::string_view line) {
  const std::string_view bare = StripSpace(line);
  if (bare.empty() || line.front() == ';' || line.front() == '#') {
    return true;
  }
  if (bare.front() == '[') {
    const std::string_view name = line.substr(line.find('[') + 1);
    return AddStanza(name.substr(0, name.find(']')));
  }
  return AddKeyword(line);
}

/// What the stanza's keys begin with. No name and no keyword holds a line feed, so it parts the two.
std::string KeyOfStanza(const std::string &name) { return LowerCase(name) + '\n'; }

std::string KeyOfKeyword(bool exactCase, const std::string &keyword) {
  return exactCase ? keyword : LowerCase(keyword);
}

/// Of stanzas and of keywords with the same key the newest counts, which is met first.
Index MakeIndex(bool exactCase) {
  Index index;
  for (const Stanza &stanza : state->stanzas) {
    const std::string key = KeyOfStanza(stanza.name);
    // A keyword is never empty, so the bare key tells that the stanza has been met.
    if (!index.emplace(key, nullptr).second) {
      continue;
    }
    for (const iwiPAIR &line : stanza.keywords) {
      index.emplace(key + KeyOfKeyword(exactCase, line.first), &line.second);
    }
  }
  return index;
}

}  // namespace

constinit LoadStateEntry &responseFileState = state;

bool iwiReadResponseFile(const std::string &path) {
  if (!state->stanzas.empty()) {
    return true;
  }
  const OwnedStream file(OpenCFile(path.c_str(), "rt"));
  if (!file) {
    Log("***Can't open '%s'", path.c_str());
    return false;
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
  return good;
}

bool iwiGetResponseValue(bool exactCase, const std::string &stanza, const std::string &keyword, std::string &value) {
  value.clear();
  Index &index = state->indexes[exactCase ? 1 : 0];
  if (index.empty()) {
    index = MakeIndex(exactCase);
  }
  const auto found = index.find(KeyOfStanza(stanza) + KeyOfKeyword(exactCase, keyword));
  if (found == index.end() || found->second == nullptr) {
    return false;
  }
  value = *found->second;
  return true;
}

}  // namespace zqv
