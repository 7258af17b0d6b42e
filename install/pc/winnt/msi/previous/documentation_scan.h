#pragma once

#include "base/load_state.h"

namespace zqv {

/// The formats of documentation that an earlier version has brought, looked for once per load, on first use.

extern LoadStateEntry &documentationScanState;

struct DocumentationFormats {
  bool chm = false;  ///< HTML Help
  bool pdf = false;
  bool htm = false;
};

/// Looks below the previous program folder (ZQVPREVPGM, else what the registry has); without one, none is there.
const DocumentationFormats &FindOldDocumentation();

}  // namespace zqv
