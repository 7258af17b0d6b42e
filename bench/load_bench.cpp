#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

/// What loading, finding an action and unloading cost, beside the same for an empty DLL in C: what each further action
/// of an installation pays before its first line. The system's libraries are loaded already, as in an installer engine.
///
///     load_bench.exe
namespace {

constexpr int kRounds = 15;
constexpr int kLoads = 200;

double Microseconds(const char *library, const char *action) {
  LARGE_INTEGER frequency, begin, end;
  QueryPerformanceFrequency(&frequency);
  QueryPerformanceCounter(&begin);
  for (int load = 0; load < kLoads; ++load) {
    const HMODULE module = LoadLibraryA(library);
    if (module == nullptr || GetProcAddress(module, action) == nullptr) {
      std::printf("%s cannot be loaded\n", library);
      std::exit(1);
    }
    FreeLibrary(module);
  }
  QueryPerformanceCounter(&end);
  return 1e6 * static_cast<double>(end.QuadPart - begin.QuadPart) / static_cast<double>(frequency.QuadPart) / kLoads;
}

}  // namespace

int main() {
  LoadLibraryA("msi.dll");
  LoadLibraryA("shell32.dll");
  double empty = 1e9;
  double library = 1e9;
  for (int round = 0; round < kRounds; ++round) {  // the best one counts: whatever else the machine does only adds
    empty = std::min(empty, Microseconds("empty_action.dll", "empty@4"));
    library = std::min(library, Microseconds("zqviwicn.dll", "iwiUserExit"));
  }
  std::printf("load, find, unload: empty DLL %.0f us, zqviwicn.dll %.0f us, ratio %.2f\n", empty, library,
              library / empty);
  return 0;
}
