#pragma once

#include "base/result_code.h"

namespace zqv {

/// Programs that register a part of the product with the system, and take it back. Each is paired with its opposite:
/// what it does in the deferred pass it does in a rollback too, so that a package has a rollback row of the one in
/// front of the deferred row of the other. Each waits a minute and a half at the most. What cannot be run, does not end
/// in time, or fails, is told, and no failure. Returns ERROR_SUCCESS, or ERROR_INSTALL_FAILURE when a property cannot
/// be read.
enum class Registration {
  addDotNet,       ///< iwiRegisterDotNet: the product's program of its own; one that is not there is no failure at all
  deleteDotNet,    ///< iwiDeregisterDotNet
  addCounters,     ///< iwiDirectAddPerfMonExec: the system's lodctr; only when ZQVPERFMON is "1"
  deleteCounters,  ///< iwiDirectDeletePerfMon: the system's unlodctr; likewise
};

ResultCode Register(Registration which);

/// The body of the exported action that is named beside its member.
template <Registration which>
ResultCode Register() {
  return Register(which);
}

/// iwiDirectAddPerfMonInit: publishes whether the performance counters are to be registered, "1" or nothing in
/// ZQVPERFMON: where the server is local after this installation. Plans the progress of iwiDirectAddPerfMonExec.
/// Returns ERROR_INSTALL_FAILURE when the installer cannot tell, or the property cannot be set.
ResultCode PlanCounters();

}  // namespace zqv
