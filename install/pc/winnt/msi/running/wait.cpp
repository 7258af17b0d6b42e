#include "running/wait.h"

#include "runtime/log.h"
#include "runtime/message.h"
#include "runtime/progress.h"
#include "runtime/record.h"
#include "runtime/session.h"

namespace zqv {

namespace {

constexpr DWORD kStep = 500;  // milliseconds

int Seconds(int steps) { return static_cast<int>(static_cast<long long>(steps) * kStep / 1000); }

}  // namespace

void WaitInSteps(int steps, const std::function<bool()> &running,
                 const std::function<void(int left, bool waiting)> &onStep, bool isOver) {
  bool stillRunning = !isOver;
  int waited = 0;
  for (int step = 0; step < steps; ++step) {
    if (onStep) {
      onStep(steps - step, stillRunning);
    }
    if (stillRunning) {
      stillRunning = running();
    }
    if (stillRunning) {
      Sleep(kStep);
      ++waited;
    }
  }
  if (stillRunning) {
    Log("Wait timed out after %d seconds", Seconds(steps));
  } else {
    Log("Waited %d seconds", Seconds(waited));
  }
}

// A last field of 0: action data does not move the bar.
WaitBar::WaitBar() : progress_(MakeRecord({kProgressActionInfo, 1, 0})) {
  if (progress_) {
    SendProgress(progress_.Get(), 0);
    SetFields(progress_.Get(), {kProgressIncrement, kTicksPerUnit, 0});
  }
  actionData_ = MakeRecord({"", ""});
}

void WaitBar::WaitWhile(int steps, UINT text, const std::string &subject, const std::function<bool()> &running,
                        bool isOver) {
  Begin(text);
  const auto show = [&](int left, bool waiting) {
    if (waiting) {
      ShowCountdown(left, subject);
    }
    Step();
  };
  WaitInSteps(steps, running, show, isOver);
}

void WaitBar::iwiTimedPause(int steps) {
  Begin(message::kShortPause);
  for (int step = 0; step < steps; ++step) {
    ShowCountdown(steps - step, "");
    Step();
    Sleep(kStep);
  }
}

void WaitBar::Close() {
  CloseRecord(progress_);
  CloseRecord(actionData_);
}

void WaitBar::Begin(UINT text) {
  shown_ = -1;
  const std::string description = NlsText(message::kStopDescription);
  const std::string shownText = NlsText(text);
  const std::string &action = RunningAction();
  SendRecord(INSTALLMESSAGE_ACTIONSTART, {action.c_str(), description.c_str(), shownText.c_str()});
}

void WaitBar::ShowCountdown(int remaining, const std::string &subject) {
  const int seconds = Seconds(remaining);
  if (seconds == shown_ || !actionData_) {
    return;
  }
  shown_ = seconds;
  const std::string text = std::to_string(seconds);
  if (subject.empty()) {
    SetFields(actionData_.Get(), {text.c_str(), ""});
  } else {
    SetFields(actionData_.Get(), {subject.c_str(), text.c_str()});
  }
  MsiProcessMessage(Session().handle, INSTALLMESSAGE_ACTIONDATA, actionData_.Get());
}

void WaitBar::Step() {
  if (progress_) {
    SendProgress(progress_.Get(), kTicksPerUnit);
  }
}

}  // namespace zqv
