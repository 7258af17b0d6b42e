#pragma once

namespace zqv {

/// Finds out whether this installation needs a restart, as far as the installer knows by now: files in use were
/// replaced, or it has scheduled one, which is logged. False when the property that tells cannot be read.
[[nodiscard]] bool AskRestart(bool &needed);

}  // namespace zqv
