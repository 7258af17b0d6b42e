#include "running/stop_plan.h"

#include "base/text.h"

namespace zqv {

namespace {

bool IsUpTo(int most, int number) { return number >= 0 && number <= most; }

}  // namespace

std::string TextOf(const StopPlan &plan) {
  return Format("%d,%d,%d", plan.firstService, plan.secondService, plan.queueManagers);
}

std::optional<StopPlan> ParseStopPlan(std::string_view text) {
  StopPlan plan;
  std::string_view rest = text;
  for (int StopPlan::*number : {&StopPlan::firstService, &StopPlan::secondService, &StopPlan::queueManagers}) {
    plan.*number = DecimalValue(rest);
    const std::size_t comma = rest.find(',');
    rest = comma == std::string_view::npos ? std::string_view() : rest.substr(comma + 1);
  }
  // Composed anew it has to be the same text: no blank, no sign, no further number.
  if (TextOf(plan) != text || !IsUpTo(1, plan.firstService) || !IsUpTo(1, plan.secondService) ||
      !IsUpTo(kMostQueueManagers, plan.queueManagers)) {
    return std::nullopt;
  }
  return plan;
}

}  // namespace zqv
