#pragma once

#include "platform/win32.h"

namespace zqv {

/// Tells whether only the client is installed, and logs the answer: ZQVCLIENT says so, or else the package is the
/// client's, or the system has no Windows NT version, or the installed product is a client. Returns ERROR_SUCCESS, or
/// ERROR_INSTALL_FAILURE without an answer when a property cannot be read. A registry value that cannot be read counts
/// as one that is not there.
UINT IsClientOnly(bool &clientOnly);

}  // namespace zqv
