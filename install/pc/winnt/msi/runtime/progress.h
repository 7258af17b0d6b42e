#pragma once

#include <string>

#include "platform/msi.h"

/// What the user sees of a deferred action's progress. All of it acts in the scheduled mode only and always gives
/// ERROR_SUCCESS.

/// The progress ticks of one unit of work: a file or folder deleted, one step of a wait.
constexpr int kTicksPerUnit = 100000;

/// Moves the bar by `ticks`. A record that the caller has made is sent as it is, and stays the caller's to close; with
/// none (0) one is made for the call.
UINT SendProgress(MSIHANDLE record, int ticks);

/// Shows one line of action data.
UINT SendActionData(const std::string &text);
