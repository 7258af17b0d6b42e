#pragma once

#include <string>

namespace zqv {

/// What every part of an earlier version has in common that a feature of the package may take the place of, be it a
/// component or the documentation in one language.

/// True when the feature is being installed. One whose state cannot be read is not.
bool IsReplacedBy(const char *feature);

/// Logs and publishes what becomes of a part: where it is not replaced, it goes, `told` says so, and the property
/// `decision` is "1", else empty. False when the property cannot be set.
[[nodiscard]] bool PublishDecision(bool isReplaced, const char *told, const char *decision);

/// True when the earlier version has recorded a component of this name, whatever the type of its value.
bool HasOldComponent(const std::string &name);

/// Stacks the removal of that record. One that cannot be stacked, which is logged, does not keep the others from it.
void StackOldComponent(const std::string &name);

}  // namespace zqv
