#pragma once

#include <string>

#include "base/load_state.h"

namespace zqv {

/// What the registry tells of a product that is installed already, asked once per load, on first use.

extern LoadStateEntry &previousInstallationState;

struct PreviousInstallation {
  bool exists = false;  ///< the product's key holds a VRMF; without one, the folders may still be known

  std::string version;  ///< that VRMF

  // As the registry has them, without a backslash at their ends. Empty where it has none, or none that can be a folder,
  // which is told.

  std::string programFolder;
  std::string dataFolder;
  std::string logFolder;
};

const PreviousInstallation &FindPreviousInstallation();

/// The earlier version's program folder: ZQVPREVPGM, else what the registry has. Empty when neither can be read.
const std::string &PreviousProgramFolder();

}  // namespace zqv
