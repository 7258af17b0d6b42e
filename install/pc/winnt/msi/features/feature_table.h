#pragma once

namespace zqv {

/// The product's features, as the package's Feature table names them.

// NOLINTBEGIN(readability-identifier-naming): the package's own names
enum class Feature {
#define FEATURE(name) name,
#include "features/feature_table.inc"
#undef FEATURE
};
// NOLINTEND(readability-identifier-naming)

/// The names by Feature, and so in the order in which lists of features name them.
inline constexpr const char *kFeatureNames[] = {
#define FEATURE(name) #name,
#include "features/feature_table.inc"
#undef FEATURE
};

constexpr const char *NameOf(Feature feature) { return kFeatureNames[static_cast<int>(feature)]; }

}  // namespace zqv
