#pragma once

#include <string_view>

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

/// The language of a documentation feature, as in "de_de"; empty for any other feature.
constexpr std::string_view DocumentationLanguageOf(std::string_view feature) {
  constexpr std::string_view kBefore = "docs_";
  constexpr std::string_view kBehind = "_eclipse";
  const bool isDocumentation = feature.starts_with(kBefore) && feature.ends_with(kBehind);
  return isDocumentation ? feature.substr(kBefore.size(), feature.size() - kBefore.size() - kBehind.size())
                         : std::string_view();
}

constexpr const char *NameOf(Feature feature) { return kFeatureNames[static_cast<int>(feature)]; }

}  // namespace zqv
