#pragma once

#include <string>

#include "base/load_state.h"

namespace zqv {

extern LoadStateEntry &componentState;

/// The key of the first component in the package that is being installed locally, or `otherwise` when there is none: a
/// component that rows of other tables can belong to. Looked up once; the answer, `otherwise` included, is kept for the
/// life of the load.
const std::string &iwiFindLocalComponent(const std::string &otherwise);

}  // namespace zqv
