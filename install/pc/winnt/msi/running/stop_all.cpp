#include "running/stop_all.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "running/process_image.h"
#include "running/product_files.h"
#include "running/queue_managers.h"
#include "running/service.h"
#include "running/stop_plan.h"
#include "running/wait.h"
#include "runtime/log.h"
#include "runtime/message.h"
#include "runtime/phase.h"
#include "runtime/progress.h"
#include "runtime/property.h"
#include "runtime/session.h"
#include "services/files/existence.h"
#include "services/system/process.h"

namespace zqv {

namespace {

constexpr char kPlan[] = "ZQVSTOPPLAN";
constexpr char kEndQueueManager[] = "endqvm.exe";
constexpr char kEndListeners[] = "endqvlsr.exe";
constexpr int kHidden = 0;
constexpr DWORD kVersionLength = 16;

// The waits' budgets, in steps of half a second.
constexpr int kServiceSteps = 240;
constexpr int kPauseSteps = 6;
constexpr int kQueueManagerSteps = 90;  // for each
constexpr int kListenerSteps = 20;      // for each queue manager
constexpr int kFilesSteps = 120;

/// One run of the action.
struct Stop {
  bool deferred;
  StopPlan plan;               ///< filled step by step by what is found, unless it is given
  bool planIsGiven = false;    ///< by the immediate pass
  int ticks = 0;               ///< of the immediate pass
  std::optional<WaitBar> bar;  ///< of the deferred pass
  std::vector<std::string> queueManagers;
};

/// What the deferred pass waits for in one step.
struct Wait {
  int steps;
  bool isOver;  ///< for a service: it has stopped meanwhile
};

/// One step of the sequence, walked by both passes, so that they cannot disagree: what is waited for, and what each
/// pass does about it. A step that is not about a part of the plan is always taken.
struct Step {
  const char *subject;                              ///< the service or the process image, if it is about one
  int (*find)(const Stop &stop, const Step &step);  ///< how many there are now
  int StopPlan::*planned;                           ///< how many are planned for
  int stepsForEach;
  void (*request)(Stop &stop, const Step &step);                     ///< the immediate pass, if it does anything
  void (*carryOut)(Stop &stop, const Step &step, const Wait &wait);  ///< the deferred pass
};

// A service.

int FindService(const Stop & /*stop*/, const Step &step) { return iwiIsServiceActive(step.subject) ? 1 : 0; }

void RequestService(Stop & /*stop*/, const Step &step) { iwiStopService(false, false, nullptr, step.subject); }

void AwaitService(Stop &stop, const Step &step, const Wait &wait) {
  stop.bar->WaitWhile(
      wait.steps, message::kServiceWait, step.subject, [&] { return iwiIsServiceActive(step.subject); }, wait.isOver);
}

// A pause.

void Pause(Stop &stop, const Step & /*step*/, const Wait &wait) { stop.bar->iwiTimedPause(wait.steps); }

// The queue managers.

int FindQueueManagers(const Stop &stop, const Step & /*step*/) {
  return static_cast<int>(std::min<std::size_t>(stop.queueManagers.size(), kMostQueueManagers));
}

void RequestQueueManagers(Stop &stop, const Step & /*step*/) {
  std::string path;
  if (!ProductFile(kEndQueueManager, path)) {
    return;
  }
  for (const std::string &name : stop.queueManagers) {
    if (!MayRunPrograms() || !iwiLaunch(path, "-i " + name, "", kHidden, nullptr)) {
      Log("Unable to launch '%s'", path.c_str());
    }
  }
}

void AwaitQueueManagers(Stop &stop, const Step & /*step*/, const Wait &wait) {
  stop.bar->WaitWhile(wait.steps, message::kQueueManagerWait, "", iwiQueueManagersRunning);
}

// Their listeners. The command that ends them is not in every version of the product.

bool FindListenersCommand(std::string &path) {
  const bool found = ProductFile(kEndListeners, path) && MayRunPrograms() && iwiFileExists(path);
  LogLine(found ? "Found endqvlsr" : "Not found endqvlsr");
  return found;
}

void LookForListenersCommand(Stop & /*stop*/, const Step & /*step*/) {
  std::string path;
  FindListenersCommand(path);
}

void EndListeners(Stop &stop, const Step & /*step*/, const Wait & /*wait*/) {
  std::string path;
  if (!FindListenersCommand(path)) {
    return;
  }
  for (const std::string &name : stop.queueManagers) {
    // One that cannot be launched has had its line; what it leaves is ended by force.
    static_cast<void>(iwiLaunch(path, "-m " + name, "", kHidden, nullptr));
  }
}

void AwaitListeners(Stop &stop, const Step & /*step*/, const Wait &wait) {
  stop.bar->WaitWhile(wait.steps, message::kListenerWait, "", iwiListenersRunning);
}

// A process that is left over.

void Terminate(Stop & /*stop*/, const Step &step, const Wait & /*wait*/) {
  iwiTerminateProcessByImage(ValueOf(Kept::programFolder) + "\\bin", step.subject);
}

// The product's files.

void AwaitFiles(Stop &stop, const Step & /*step*/, const Wait &wait) {
  stop.bar->WaitWhile(wait.steps, message::kFilesWait, "", IsProductRunning);
}

constexpr Step kSequence[] = {
    {kFirstService, FindService, &StopPlan::firstService, kServiceSteps, RequestService, AwaitService},
    {kSecondService, FindService, &StopPlan::secondService, kServiceSteps, RequestService, AwaitService},
    {"", nullptr, nullptr, kPauseSteps, nullptr, Pause},
    {"", FindQueueManagers, &StopPlan::queueManagers, kQueueManagerSteps, RequestQueueManagers, AwaitQueueManagers},
    {"", nullptr, nullptr, 0, LookForListenersCommand, EndListeners},
    {"", FindQueueManagers, &StopPlan::queueManagers, kListenerSteps, nullptr, AwaitListeners},
    {"runqvlsr.exe", nullptr, nullptr, 0, nullptr, Terminate},
    {"zqvmtbrn.exe", nullptr, nullptr, 0, nullptr, Terminate},
    {"zqvmsrvn.exe", nullptr, nullptr, 0, nullptr, Terminate},
    {"", nullptr, nullptr, kPauseSteps, nullptr, Pause},
    {"zqvxssvn.exe", nullptr, nullptr, 0, nullptr, Terminate},
    {"", nullptr, nullptr, kFilesSteps, nullptr, AwaitFiles},
};

void Walk(Stop &stop, const Step &step) {
  int count = 1;
  Wait wait{};
  if (step.planned != nullptr) {
    const int found = step.find(stop, step);
    if (!stop.planIsGiven) {
      stop.plan.*step.planned = found;
    }
    count = stop.plan.*step.planned;
    wait.isOver = found == 0;
  }
  if (count == 0) {
    return;
  }
  wait.steps = count * step.stepsForEach;
  if (stop.deferred) {
    step.carryOut(stop, step, wait);
    return;
  }
  if (step.request != nullptr) {
    step.request(stop, step);
  }
  stop.ticks = AddUnits(stop.ticks, wait.steps);
}

/// Reads the plan of the immediate pass. False when that fails; a property that holds none is no failure.
bool ReadPlan(Stop &stop) {
  std::string text;
  if (!GetProperty(kPlan, text)) {
    return false;
  }
  const std::optional<StopPlan> plan = ParseStopPlan(text);
  stop.planIsGiven = plan.has_value();
  if (plan) {
    stop.plan = *plan;
  } else if (text.empty()) {
    LogLine("No plan of the stop; planning by what is found");
  } else {
    Log("***'%s' is no plan of the stop; planning by what is found", text.c_str());
  }
  return true;
}

bool ReadProperties(Stop &stop) {
  std::string version;
  return GetKeptProperty(Kept::programFolder) && GetKeptProperty(Kept::dataFolder) &&
         GetProperty("ZQVPREVVERSION", version, kVersionLength) && (!stop.deferred || ReadPlan(stop));
}

}  // namespace

ResultCode StopAllQv() {
  Stop stop{.deferred = AnnouncePhase() == Phase::deferred};
  if (!stop.deferred) {
    // So that the deferred pass finds it in place.
    iwiLocatePsapi(nullptr);
  }
  if (!ReadProperties(stop)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (stop.deferred) {
    stop.bar.emplace();
  }
  stop.queueManagers = ListQueueManagers(ValueOf(Kept::dataFolder));
  for (const Step &step : kSequence) {
    Walk(stop, step);
  }
  if (stop.deferred) {
    stop.bar->Close();
    return ERROR_SUCCESS;
  }
  AnnounceTicks(stop.ticks);
  return ResultOf(SetProperty(kPlan, TextOf(stop.plan)));
}

}  // namespace zqv
