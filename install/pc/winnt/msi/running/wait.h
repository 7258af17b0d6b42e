#pragma once

#include <functional>
#include <string>

#include "platform/owner.h"

namespace zqv {

/// Waits until `running` is false, `steps` steps of half a second at the most, and logs for how long. `onStep`, if any,
/// is called in each step first, also in those for which the wait is over already, as it is from the beginning where
/// `isOver`: it gets the steps that are left and whether the wait goes on.
void WaitInSteps(int steps, const std::function<bool()> &running,
                 const std::function<void(int left, bool waiting)> &onStep = nullptr, bool isOver = false);

/// Waiting in a deferred action, in steps of half a second, with a progress bar and a countdown in seconds. The bar
/// always moves by one unit for each planned step, however soon the wait is over.
class WaitBar {
 public:
  /// Tells the installer that action data does not move the bar, and makes the two records of the waits.
  WaitBar();

  /// Waits until `running` is false, `steps` steps at the most. `text` is the template that the installer fills with
  /// the countdown, or, where a `subject` is given, with that and the countdown. A wait that is over before it begins
  /// only advances the bar.
  void WaitWhile(int steps, UINT text, const std::string &subject, const std::function<bool()> &running,
                 bool isOver = false);

  /// Always waits the full time.
  void iwiTimedPause(int steps);

  /// Closes the two records, when the last wait is over.
  void Close();

 private:
  void Begin(UINT text);
  void ShowCountdown(int remaining, const std::string &subject);
  void Step();

  OwnedInstallerHandle progress_;
  OwnedInstallerHandle actionData_;
  int shown_ = 0;  ///< the countdown that is shown; below zero: none yet
};

}  // namespace zqv
