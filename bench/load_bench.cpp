#include "measure.h"
#include "platform/win32.h"

/// What each further action of an installation pays for being in this library. The system's libraries are loaded
/// already, as in an installer engine.
namespace {

constexpr int kRounds = 41;
constexpr int kLoads = 10;

using EntryPoint = UINT(__stdcall *)(MSIHANDLE);

/// Loads, finds and unloads, and with a session calls the action in between.
void Use(const char *library, const char *action, MSIHANDLE session) {
  const HMODULE module = LoadLibraryA(library);
  const FARPROC entry = module == nullptr ? nullptr : GetProcAddress(module, action);
  if (entry == nullptr) {
    Fail(std::string(library) + " cannot be loaded");
  }
  if (session != 0) {
    reinterpret_cast<EntryPoint>(reinterpret_cast<void *>(entry))(session);
  }
  FreeLibrary(module);
}

double Repeat(const std::function<void()> &work) {
  return Time([&] {
    for (int load = 0; load < kLoads; ++load) {
      work();
    }
  });
}

}  // namespace

void BenchLoads() {
  LoadLibraryA("shell32.dll");
  const auto useLibrary = [](MSIHANDLE session) { Use("zqviwicn.dll", "iwiUserExit", session); };
  const auto useEmpty = [](MSIHANDLE session) { Use("empty_action.dll", "empty@4", session); };
  Compare(kRounds, kLoads, [&] { return Repeat([&] { useLibrary(0); }); },
          {{"load, unload: an empty DLL in C", [&] { return Repeat([&] { useEmpty(0); }); }}});

  const InstallerSession session;
  useLibrary(session.Get());
  const int lines = CountLines();
  const auto act = [&] {
    useEmpty(session.Get());
    for (int line = 0; line < lines; ++line) {
      BareLine(session.Get(), "12:00:00 QVCA info iwiUserExit: As long a line as most of them are");
    }
  };
  Compare(kRounds, kLoads, [&] { return Repeat([&] { useLibrary(session.Get()); }); },
          {{"first action: an empty DLL in C, same lines", [&] { return Repeat(act); }}});
}
