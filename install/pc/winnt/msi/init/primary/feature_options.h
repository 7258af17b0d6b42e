#pragma once

#include "base/load_state.h"

namespace zqv {

extern LoadStateEntry &featureOptionState;

}  // namespace zqv
