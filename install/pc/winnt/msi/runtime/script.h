#pragma once

namespace zqv {

/// The property that tells how far the installation's script has come. It is empty until deferred actions are planned;
/// a package gives it another value behind the script's end.
inline constexpr char kScript[] = "ZQVSCRIPT";
inline constexpr char kScriptPlanned[] = "1";

}  // namespace zqv
