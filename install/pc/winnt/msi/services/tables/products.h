#pragma once

#include <string>

#include "base/load_state.h"

namespace zqv {

/// The package's own identity, and the products that are installed already.

extern LoadStateEntry &productState;

/// Finds an installed product of the upgrade code: `product` gets its product code, or is empty when there is none. A
/// product whose name cannot be read does not count as installed.
void iwiFindRelatedProduct(const std::string &upgradeCode, std::string &product);

/// The package's name as `type` (2 or 3) has it, from the product data table; empty for any other type. `version`, if
/// not null, has to begin with an entry's version prefix for the entry to count. "static data error" when no entry
/// does.
std::string iwiGetProductData(int type, const char *version);

/// Says whether the upgrade code is the package's own, without regard to case. False, with `isOwn` false, when a
/// property cannot be read.
[[nodiscard]] bool iwiIsOwnUpgradeCode(const std::string &upgradeCode, bool &isOwn);

}  // namespace zqv
