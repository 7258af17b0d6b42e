#pragma once

#include <string>

#include "platform/msi.h"

namespace zqv {

/// What the user sees of a deferred action's progress. All but the announcement acts in the scheduled mode only.

/// The progress ticks of one unit of work: a file or folder deleted, one step of a wait.
constexpr int kTicksPerUnit = 100000;

// What field 1 of a progress record says, as the platform's documentation of MsiProcessMessage has it.
constexpr int kProgressActionInfo = 1;  ///< how action data moves the bar
constexpr int kProgressIncrement = 2;   ///< the bar moves by field 2
constexpr int kProgressAddition = 3;    ///< field 2 adds to the bar's length

/// Adds to a total of ticks; one that would overflow stays at the largest number.
int AddTicks(int total, int ticks);

/// The same with the ticks of a number of units of work.
int AddUnits(int total, int units);

/// Adds what an immediate pass has planned to the bar's length, and logs it. A record's number has 32 bits: a total
/// that stays at the largest one has the bar full before the work is over, and it stays so.
void AnnounceTicks(int ticks);

/// Moves the bar by `ticks`. A record that the caller has made is sent as it is, and stays the caller's to close; with
/// none (0) one is made for the call.
void SendProgress(MSIHANDLE record, int ticks);

/// Shows one line of action data.
void SendActionData(const std::string &text);

}  // namespace zqv
