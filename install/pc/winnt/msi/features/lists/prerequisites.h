#pragma once

#include "base/result_code.h"

namespace zqv {

/// What an installation needs. Each action writes its list anew, a row for each need that is not met, and answers
/// whether there is one. Both return ERROR_SUCCESS, or ERROR_INSTALL_FAILURE when a property cannot be read or set.

/// iwiListProductPrereqs: the system, an administrator, no running product, and no restart that Windows owes for the
/// program folder.
ResultCode ListProductPrerequisites();

/// iwiListFeaturePrereqs: the features that others need. A need is not met when a feature is going to be installed and
/// the one that it needs is not local afterwards.
ResultCode ListFeaturePrerequisites();

}  // namespace zqv
