#pragma once

#include <forward_list>
#include <string>

namespace zqv {

/// Two texts that belong together. What they are is said where the list is kept.
struct iwiPAIR {
  std::string first;
  std::string second;
};

/// New pairs are put at the front, so a list is walked newest first. The list owns its texts.
using iwiPAIRLIST = std::forward_list<iwiPAIR>;

}  // namespace zqv
