#include "running/stop_all.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "base/text.h"
#include "running/process_image.h"
#include "running/product_files.h"
#include "running/queue_managers.h"
#include "running/service.h"
#include "running/wait.h"
#include "runtime/log.h"
#include "runtime/message.h"
#include "runtime/phase.h"
#include "runtime/progress.h"
#include "runtime/property.h"
#include "runtime/record.h"
#include "runtime/session.h"
#include "services/files/existence.h"
#include "services/system/process.h"

namespace zqv {

namespace {

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
  std::vector<std::string> queueManagers;
  bool canEndListeners = false;
  int ticks = 0;               ///< of the immediate pass
  std::optional<WaitBar> bar;  ///< of the deferred pass
};

/// One step of the sequence, walked by both passes, so that they cannot disagree: how many steps of waiting it takes
/// now, and what each pass does about it. A pass for which there is nothing to do has none.
struct Step {
  const char *subject;  ///< the service or the process image, if it is about one
  int (*plan)(Stop &stop, const Step &step);
  void (*request)(Stop &stop, const Step &step);              ///< the immediate pass
  void (*carryOut)(Stop &stop, const Step &step, int steps);  ///< the deferred pass
};

/// Launches one of the product's commands for each queue manager, without waiting for it.
void LaunchForEach(const Stop &stop, const char *command, const char *option) {
  std::string path;
  if (!ProductFile(command, path)) {
    return;
  }
  for (const std::string &name : stop.queueManagers) {
    if (!iwiLaunch(path, Format("%s %s", option, name.c_str()), "", kHidden, nullptr)) {
      Log("Unable to launch '%s'", path.c_str());
    }
  }
}

int ForEachQueueManager(const Stop &stop, int steps) {
  constexpr std::size_t kMost = 1000000;
  return steps * static_cast<int>(std::min(stop.queueManagers.size(), kMost));
}

// A service.

int PlanService(Stop & /*stop*/, const Step &step) { return iwiIsServiceActive(step.subject) ? kServiceSteps : 0; }

void RequestService(Stop & /*stop*/, const Step &step) { iwiStopService(false, false, nullptr, step.subject); }

void AwaitService(Stop &stop, const Step &step, int steps) {
  stop.bar->WaitWhile(steps, message::kServiceWait, step.subject, [&] { return iwiIsServiceActive(step.subject); });
}

// A pause.

int PlanPause(Stop & /*stop*/, const Step & /*step*/) { return kPauseSteps; }

void Pause(Stop &stop, const Step & /*step*/, int steps) { stop.bar->iwiTimedPause(steps); }

// The queue managers.

int PlanQueueManagers(Stop &stop, const Step & /*step*/) { return ForEachQueueManager(stop, kQueueManagerSteps); }

void RequestQueueManagers(Stop &stop, const Step & /*step*/) { LaunchForEach(stop, kEndQueueManager, "-i"); }

void AwaitQueueManagers(Stop &stop, const Step & /*step*/, int steps) {
  stop.bar->WaitWhile(steps, message::kQueueManagerWait, "", iwiQueueManagersRunning);
}

// Their listeners. The command that ends them is not in every version of the product.

int PlanListeners(Stop &stop, const Step & /*step*/) {
  std::string path;
  stop.canEndListeners = ProductFile(kEndListeners, path) && iwiFileExists(path);
  LogLine(stop.canEndListeners ? "Found endqvlsr" : "Not found endqvlsr");
  return ForEachQueueManager(stop, kListenerSteps);
}

void AwaitListeners(Stop &stop, const Step & /*step*/, int steps) {
  if (stop.canEndListeners) {
    LaunchForEach(stop, kEndListeners, "-m");
  }
  stop.bar->WaitWhile(steps, message::kListenerWait, "", iwiListenersRunning);
}

// A process that is left over.

int PlanNothing(Stop & /*stop*/, const Step & /*step*/) { return 0; }

void Terminate(Stop & /*stop*/, const Step &step, int /*steps*/) {
  iwiTerminateProcessByImage(ValueOf(Kept::programFolder) + "\\bin", step.subject);
}

// The product's files.

int PlanFiles(Stop & /*stop*/, const Step & /*step*/) { return kFilesSteps; }

void AwaitFiles(Stop &stop, const Step & /*step*/, int steps) {
  stop.bar->WaitWhile(steps, message::kFilesWait, "", IsProductRunning);
}

constexpr Step kSequence[] = {
    {kFirstService, PlanService, RequestService, AwaitService},
    {kSecondService, PlanService, RequestService, AwaitService},
    {"", PlanPause, nullptr, Pause},
    {"", PlanQueueManagers, RequestQueueManagers, AwaitQueueManagers},
    {"", PlanListeners, nullptr, AwaitListeners},
    {"runqvlsr.exe", PlanNothing, nullptr, Terminate},
    {"zqvmtbrn.exe", PlanNothing, nullptr, Terminate},
    {"zqvmsrvn.exe", PlanNothing, nullptr, Terminate},
    {"", PlanPause, nullptr, Pause},
    {"zqvxssvn.exe", PlanNothing, nullptr, Terminate},
    {"", PlanFiles, nullptr, AwaitFiles},
};

bool ReadProperties() {
  std::string version;
  return GetKeptProperty(Kept::programFolder) && GetKeptProperty(Kept::dataFolder) &&
         GetProperty("ZQVPREVVERSION", version, kVersionLength);
}

/// Adds the planned ticks to the bar's length.
void LengthenBar(int ticks) {
  Log("Total ticks = %d", ticks);
  SendRecord(INSTALLMESSAGE_PROGRESS, {kProgressAddition, ticks, 0, 0});
}

}  // namespace

ResultCode StopAllQv() {
  Stop stop{.deferred = AnnouncePhase() == Phase::deferred};
  if (!stop.deferred) {
    // So that the deferred pass finds it in place.
    iwiLocatePsapi(nullptr);
  }
  if (!ReadProperties()) {
    return ERROR_INSTALL_FAILURE;
  }
  if (stop.deferred) {
    stop.bar.emplace();
  }
  stop.queueManagers = ListQueueManagers(ValueOf(Kept::dataFolder));
  for (const Step &step : kSequence) {
    const int steps = step.plan(stop, step);
    if (stop.deferred) {
      if (steps > 0 || step.plan == PlanNothing) {
        step.carryOut(stop, step, steps);
      }
    } else {
      if (steps > 0 && step.request != nullptr) {
        step.request(stop, step);
      }
      stop.ticks = AddUnits(stop.ticks, steps);
    }
  }
  if (stop.deferred) {
    stop.bar->Close();
  } else {
    LengthenBar(stop.ticks);
  }
  return ERROR_SUCCESS;
}

}  // namespace zqv
