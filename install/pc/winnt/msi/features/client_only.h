#pragma once

namespace zqv {

/// Tells whether only the client is installed, and logs the answer: ZQVCLIENT says so, or else the package is the
/// client's, or the system has no Windows NT version, or the installed product is a client. False, without an answer,
/// when a property cannot be read. A registry value that cannot be read counts
/// as one that is not there.
[[nodiscard]] bool IsClientOnly(bool &clientOnly);

}  // namespace zqv
