#include "runtime/path_property.h"

#include <algorithm>
#include <new>

#include "base/code_page.h"
#include "base/pair_list.h"
#include "base/text.h"
#include "runtime/log.h"
#include "runtime/property.h"

namespace zqv {

namespace {

constexpr char kCounter[] = "ZQVPROPERTYCOUNTER";

/// Each pair is a property's name and its path.
struct State {
  iwiPAIRLIST properties;
};
constinit LoadState<State> state;

/// Copies `text`; false, and a line, when there is no memory for it.
bool Copy(const std::string &text, const char *what, std::string &copy) {
  try {
    copy = text;
    return true;
  } catch (const std::bad_alloc &) {
    Log("***Unable to allocate path property %s buffer 0x%8.8lx", what, static_cast<unsigned long>(text.size() + 1));
    return false;
  }
}

}  // namespace

constinit LoadStateEntry &pathPropertyState = state;

bool GetPathProperty(const std::string &path, std::string &nameOut) {
  const auto known = std::find_if(state->properties.begin(), state->properties.end(),
                                  [&](const iwiPAIR &property) { return EqualName(property.second, path); });
  if (known != state->properties.end()) {
    nameOut = known->first;
    return true;
  }
  std::string counter;
  if (!GetProperty(kCounter, counter, kCounterLength)) {
    return false;
  }
  const int number = DecimalValue(counter);
  if (NextCounter(number) == number) {
    Log("***No path property left for '%s'", path.c_str());
    return false;
  }
  const std::string name = Format("%s%d", "ZQVPATHPROPERTY", number);
  if (!SetProperty(name.c_str(), path)) {
    return false;
  }
  nameOut = name;
  iwiPAIR property;
  const bool copied = Copy(name, "name", property.first) && Copy(path, "value", property.second);
  if (!SetProperty(kCounter, std::to_string(NextCounter(number))) || !copied) {
    return false;
  }
  // Only now: where the counter stays, the next folder gets this very property, and no row may name it for `path`.
  state->properties.push_front(std::move(property));
  return true;
}

}  // namespace zqv
