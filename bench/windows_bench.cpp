#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "bare.h"
#include "measure.h"
#include "platform/owner.h"
#include "platform/win32.h"
#include "runtime/log.h"
#include "runtime/session.h"
#include "zqviwicn/load.h"

/// The part of the figures that only a Windows system can give.
///
///     windows_bench.exe FILES...
///
/// FILES are the sizes of the trees that are copied and deleted. The libraries and the reference package lie in the
/// current folder.

std::string base;
std::string trace;

namespace {

using namespace zqv;

constexpr int kRows = 10000;

double Median(Times &times) {
  const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
  std::nth_element(times.begin(), middle, times.end());
  return *middle;
}

}  // namespace

double Time(const std::function<void()> &work) {
  LARGE_INTEGER frequency;
  LARGE_INTEGER begin;
  LARGE_INTEGER end;
  QueryPerformanceFrequency(&frequency);
  QueryPerformanceCounter(&begin);
  work();
  QueryPerformanceCounter(&end);
  return static_cast<double>(end.QuadPart - begin.QuadPart) * 1e6 / static_cast<double>(frequency.QuadPart);
}

void Print(const std::string &name, double units, Times library, Times floor) {
  std::printf("%s\t%.3f\t%.3f\n", name.c_str(), Median(library) / units, Median(floor) / units);
  std::fflush(stdout);
}

void Compare(int rounds, double units, const std::function<double()> &library, const std::vector<Floor> &floors) {
  Times own;
  std::vector<Times> bare(floors.size());
  for (int round = 0; round < rounds; ++round) {
    own.push_back(library());
    for (std::size_t floor = 0; floor < floors.size(); ++floor) {
      bare[floor].push_back(floors[floor].run());
    }
  }
  for (std::size_t floor = 0; floor < floors.size(); ++floor) {
    Print(floors[floor].name, units, own, bare[floor]);
  }
}

std::string UserLog() { return base + "\\user.log"; }

void BareLine(MSIHANDLE session, const std::string &line) {
  BareMessage(session, line);
  BareAppend({trace, UserLog()}, line);
}

void DeleteLogs() {
  DeleteFileA(trace.c_str());
  DeleteFileA(UserLog().c_str());
}

int CountLines() {
  int lines = 0;
  const OwnedStream file(std::fopen(trace.c_str(), "r"));
  for (int character; file && (character = std::fgetc(file.Get())) != EOF;) {
    lines += character == '\n' ? 1 : 0;
  }
  return lines;
}

void Fail(const std::string &why) {
  std::fprintf(stderr, "windows_bench: %s\n", why.c_str());
  std::exit(1);
}

InstallerSession::InstallerSession() {
  if (MsiOpenPackageExA("vantrelqv.msi", MSIOPENPACKAGEFLAGS_IGNOREMACHINESTATE, &handle_) != ERROR_SUCCESS) {
    Fail("vantrelqv.msi cannot be opened");
  }
  DeleteLogs();
  MsiSetPropertyA(handle_, "ZQVUSERTRACEPATH", trace.c_str());
  MsiSetPropertyA(handle_, "ZQVUSERLOGPATH", UserLog().c_str());
  MsiSetPropertyA(handle_, "ZQVTEMP", base.c_str());
  Load();
  Session().handle = handle_;
  RetireTempLog();
}

InstallerSession::~InstallerSession() {
  Unload();
  MsiCloseHandle(handle_);
  DeleteLogs();
}

int main(int argc, char **argv) {
  char temp[MAX_PATH];
  GetTempPathA(MAX_PATH, temp);
  base = temp + std::string("windows_bench") + std::to_string(GetCurrentProcessId());
  trace = base + "\\trace.log";
  CreateDirectoryA(base.c_str(), nullptr);
  MsiSetInternalUI(INSTALLUILEVEL_NONE, nullptr);
  BenchLoads();
  BenchLines();
  for (const int entries : {10, 1000, 100000}) {
    BenchReads(entries);
  }
  BenchRows(kRows);
  std::for_each(argv + 1, argv + argc, [](const char *files) { BenchFiles(std::max(1, std::atoi(files))); });
  RemoveDirectoryA(base.c_str());
  return 0;
}
