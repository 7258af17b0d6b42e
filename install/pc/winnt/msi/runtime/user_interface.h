#pragma once

namespace zqv {

/// Finds out whether the installation has the full user interface, with dialogs that ask (UILevel 5). False when that
/// cannot be read.
[[nodiscard]] bool AskFullUserInterface(bool &full);

/// Finds out whether the installation is silent, with nothing shown at all (UILevel 2). Results as above.
[[nodiscard]] bool AskSilent(bool &silent);

}  // namespace zqv
