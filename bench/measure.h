#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/msi.h"

/// Figures of the real system: an operation of the library beside its floors.

/// Microseconds that `work` takes.
double Time(const std::function<void()> &work);

/// Microseconds of several runs.
using Times = std::vector<double>;

/// Prints a line for the table: the name, the library's median and the floor's, each a unit of `units`; tabs between
/// them. The name is the operation, a colon and the floor.
void Print(const std::string &name, double units, Times library, Times floor);

struct Floor {
  std::string name;  ///< as Print has it
  std::function<double()> run;
};

/// Runs the library and the floors in turn, `rounds` times, and prints a line for each floor. A run gives its
/// microseconds; what it prepares and clears up need not be among them.
void Compare(int rounds, double units, const std::function<double()> &library, const std::vector<Floor> &floors);

/// The folder that everything lies in, and the trace log in it.
extern std::string base;
extern std::string trace;

std::string UserLog();

/// Writes a line to the installer's log, the trace log and the user log.
void BareLine(MSIHANDLE session, const std::string &line);

void DeleteLogs();

/// How many lines the trace log has.
int CountLines();

/// Ends the program with a message.
[[noreturn]] void Fail(const std::string &why);

/// The reference package, opened anew in this process with a trace log and a user log, as between the end of
/// the temporary log and the end of the installation; and the library begun in it.
class InstallerSession {
 public:
  InstallerSession();
  ~InstallerSession();
  InstallerSession(const InstallerSession &) = delete;
  InstallerSession &operator=(const InstallerSession &) = delete;
  MSIHANDLE Get() const { return handle_; }

 private:
  MSIHANDLE handle_ = 0;
};

void BenchLoads();
void BenchLines();
void BenchReads(int entries);
void BenchRows(int rows);
void BenchFiles(int files);
