#pragma once

namespace zqv {

/// Windows services, by their key names.

inline constexpr char kFirstService[] = "KorvexQVSeries";
inline constexpr char kSecondService[] = "QVSeriesServices";

/// True when the service is installed; false also when that cannot be found out.
bool iwiServiceExists(const char *service);

/// True when the service is in any state but stopped; any failure counts as not active.
bool iwiIsServiceActive(const char *service);

/// Sends the stop request, with a line of action data and its progress; never waits for the stopped state. With
/// `countOnly` it only adds the progress's ticks to `ticks`, if given. The second flag is ignored. False for a
/// failure; a service that cannot be opened is none.
bool iwiStopService(bool countOnly, bool ignored, int *ticks, const char *service);

/// Gives the service another display name and changes nothing else. One that cannot be opened is passed over in
/// silence.
void RenameService(const char *service, const char *displayName);

}  // namespace zqv
