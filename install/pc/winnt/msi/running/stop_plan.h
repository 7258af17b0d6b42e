#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zqv {

/// What the stop of the product waits for. The immediate pass publishes its plan as a property, and the deferred pass
/// walks the same, whatever has stopped, started, come or gone in between: so the ticks that the one announces are
/// those that the other sends.
struct StopPlan {
  int firstService = 0;  ///< 1 when it is waited for, else 0
  int secondService = 0;
  int queueManagers = 0;  ///< how many are waited for, kMostQueueManagers at the most
};

constexpr int kMostQueueManagers = 1000000;

/// The plan as the property's value: "FIRST,SECOND,MANAGERS", decimal numbers.
std::string TextOf(const StopPlan &plan);

/// The plan of such a value; nothing when it is any other text.
std::optional<StopPlan> ParseStopPlan(std::string_view text);

}  // namespace zqv
