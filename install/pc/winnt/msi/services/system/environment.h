#pragma once

#include <string>

namespace zqv {

/// Environment references, %NAME%, in texts.

/// How an expansion ended; `code` is the system's where the outcome is `failed`.
struct Expansion {
  enum Outcome { done, noMemory, failed } outcome;
  int code;
};

/// Replaces the references in `text` by their values; a text without "%" is left alone. Logs nothing. `text` is
/// unchanged unless the outcome is `done`.
Expansion ExpandReferences(std::string &text);

/// Replaces the references in `text` and logs what became of it. False with `text` unchanged.
[[nodiscard]] bool iwiExpandEnvironment(std::string &text);

/// Gives the library's own process the machine-wide value that the registry has for a variable, references expanded, so
/// that programs launched later see what the installation has changed. True when it was set.
[[nodiscard]] bool iwiRefreshEnvironmentVariable(const std::string &name);

}  // namespace zqv
