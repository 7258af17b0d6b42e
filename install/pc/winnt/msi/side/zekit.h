#pragma once

#include "base/result_code.h"

namespace zqv {

/// The security toolkit that the product needs. It has a setup of its own, which lies beside the package as the file
/// "zekit" of its File table, and which registers what it installs. Each is the body of the exported action named
/// beside it. A property that cannot be read or set gives ERROR_INSTALL_FAILURE.

/// iwiCheckZekitAvailable: publishes whether the kit's setup is there (ZQVZEKITAVAILABLE) and whether the kit is
/// installed (ZQVZEKITINSTALLED), each "1" or nothing. What cannot be found out is logged, and counts as a no.
ResultCode CheckZekit();

/// iwiDirectInstallZekit. The immediate pass decides by these two, and hands the path of the setup over
/// (ZQVZEKITSETUP); the deferred pass runs it, hidden, and waits for its end. A rollback has the setup take away again
/// what it has installed. Returns ERROR_INSTALL_FAILURE also when the setup fails or lies where a deferred action
/// cannot reach it: the product cannot run without the kit.
ResultCode InstallZekit();

}  // namespace zqv
