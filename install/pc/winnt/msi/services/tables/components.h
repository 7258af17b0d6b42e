#pragma once

#include <string>

#include "base/load_state.h"
#include "platform/msi.h"

namespace zqv {

extern LoadStateEntry &componentState;

/// The key of the first component in the package that is being installed locally, or `otherwise` when there is none: a
/// component that rows of other tables can belong to. Looked up once; the answer, `otherwise` included, is kept for the
/// life of the load.
const std::string &iwiFindLocalComponent(const std::string &otherwise);

/// The state that the installer brings a component to. Unknown, with a line, when that cannot be asked.
INSTALLSTATE AskComponentAction(const std::string &component);

/// The key of the first component of a feature that is going to be absent; empty when there is none.
std::string FindAbsentComponent(const std::string &feature);

}  // namespace zqv
