#pragma once

#include <string>

#include "platform/win32.h"

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

/// Replaces the references in `text` and logs what became of it. Returns 1, or 0 with `text` unchanged.
int iwiExpandEnvironment(std::string &text);

/// Gives the library's own process the machine-wide value that the registry has for a variable, references expanded, so
/// that programs launched later see what the installation has changed. Returns 1 when it was set, else 0.
int iwiRefreshEnvironmentVariable(const std::string &name);

}  // namespace zqv
