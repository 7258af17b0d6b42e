#pragma once

#include "base/result_code.h"

namespace zqv {

/// What there is of queue managers in the data folder: the list of their names, and below "qmgrs" a folder for each.
/// Each is the body of the exported action named beside it. A property that cannot be read or set gives
/// ERROR_INSTALL_FAILURE.

/// iwiStackLoadQMgrs: publishes how many there are, and their names with commas between them, as many as fit
/// (ZQVQMGRCOUNT, ZQVQMGRLIST).
ResultCode StackLoadQueueManagers();

/// iwiStackDeleteQMgrs: where the whole product is removed and the user does not keep the data, stacks the removal of
/// all of them and of their list.
ResultCode StackDeleteQueueManagers();

/// iwiSaveQmConfigInit: says in ZQVSAVEQMCONFIG whether there are any, plans the progress of the next action, and
/// deletes what an earlier one has saved.
ResultCode PlanQueueManagerSave();

/// iwiSaveQmConfigExec: its deferred pass copies the list, the product's settings and those of each queue manager to a
/// folder of the library's own, for the support engineer. A file that is not there is told, and no failure. Returns
/// ERROR_SUCCESS, ERROR_INSTALL_FAILURE, or ERROR_INSTALL_USEREXIT when copying was cancelled.
ResultCode SaveQueueManagerSettings();

}  // namespace zqv
