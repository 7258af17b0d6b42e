#include "runtime/message.h"

#include <array>

#include "base/module_file.h"
#include "base/result_code.h"
#include "base/text.h"
#include "platform/msi.h"
#include "platform/owner.h"
#include "runtime/installer_result.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "runtime/record.h"
#include "runtime/session.h"
#include "runtime/temp_name.h"

namespace zqv {

namespace {

constexpr int kMessageLength = 516;
constexpr char kSplashClass[] = "ZQVQVSeriesSplash";
constexpr DWORD kSplashPause = 250;
constexpr int kNoUserInterface = 2;
constexpr char kFallbackCaption[] = "Korvex Vantrel QV";
constexpr UINT kIconBits = 0xF0;

// How a text writes its one insert.
constexpr std::string_view kNumberedInsert = "%1";
constexpr std::string_view kTextInsert = "%s";
constexpr std::string_view kNumberInsert = "%d";

struct Severity {
  UINT icon;
  const char *word;
};
constexpr Severity kSeverities[] = {
    {MB_ICONERROR, "error"}, {MB_ICONQUESTION, "warning"}, {MB_ICONWARNING, "warning"}, {MB_ICONINFORMATION, "info"}};

/// The language of a box's buttons, by the first letter of ZQVLANGUAGECODE.
struct ButtonLanguage {
  char letter;
  WORD identifier;
};
constexpr ButtonLanguage kButtonLanguages[] = {{'a', 1033}, {'b', 1046}, {'f', 1036}, {'g', 1031}, {'i', 1040},
                                               {'j', 17},   {'k', 1042}, {'s', 1034}, {'t', 1028}, {'z', 2052}};
constexpr WORD kDefaultButtonLanguage = 1024;

struct State {
  std::string path;
  OwnedModule library;

  void Abandon() { library.Release(); }
};
constinit LoadState<State> state;

const char *SeverityOf(UINT type) {
  for (const Severity &severity : kSeverities) {
    if ((type & kIconBits) == severity.icon) {
      return severity.word;
    }
  }
  return "";
}

WORD ButtonLanguageOf(const std::string &code) {
  const std::string letters = LowerCase(code);
  for (const ButtonLanguage &language : kButtonLanguages) {
    if (!letters.empty() && letters.front() == language.letter) {
      return language.identifier;
    }
  }
  return kDefaultButtonLanguage;
}

/// False, after a line that names the wanted text by `id`, when the library cannot be loaded.
bool LoadMessageLibrary(UINT id) {
  if (!GetKeptProperty(Kept::tempFolder)) {
    return false;
  }
  if (state->path.empty()) {
    state->path = MessageLibraryName();
  }
  state->library = LoadModuleFile(state->path, LOAD_LIBRARY_AS_DATAFILE);
  if (!state->library) {
    Log("***iwiLoadNlsString LoadLibrary(%s) failed %d (ID '%lu'). (ZQV4700)", state->path.c_str(),
        static_cast<int>(GetLastError()), static_cast<unsigned long>(id));
    return false;
  }
  return true;
}

HWND FindSplash() { return FindWindowExA(nullptr, nullptr, kSplashClass, nullptr); }

void SendToInstallerLog(const std::string &text) {
  OwnedInstallerHandle record(MsiCreateRecord(1));
  if (!record) {
    Log("***iiiDisplayMsgBox: unable to create record");
    return;
  }
  ResultCode ignored = ERROR_SUCCESS;
  iwiCheckMsiResult("MsiRecordSetString", "1", MsiRecordSetStringA(record.Get(), 1, text.c_str()), ignored);
  MsiProcessMessage(Session().handle, INSTALLMESSAGE_INFO, record.Get());
  CloseRecord(record);
}

}  // namespace

constinit LoadStateEntry &messageState = state;

bool iwiLoadNlsString(std::string &text, UINT id) {
  if (!state->library && !LoadMessageLibrary(id)) {
    return false;
  }
  std::array<char, kMessageLength> buffer{};
  const int length = LoadStringA(state->library.Get(), id, buffer.data(), kMessageLength);
  if (length == 0) {
    Log("***iwiLoadNlsString() failed (ID '%lu'). (ZQV4701)", static_cast<unsigned long>(id));
    return false;
  }
  text.assign(buffer.data(), static_cast<std::size_t>(length));
  return true;
}

std::string NlsText(UINT id, const char *fallback) {
  std::string text;
  return iwiLoadNlsString(text, id) ? text : fallback;
}

void UseMessageLibrary(const std::string &path) {
  state->library.Reset();
  state->path = path;
}

void FreeMessageLibrary() {
  if (!state->library) {
    return;
  }
  // It goes even if there is no memory for the line.
  const struct Drain {
    ~Drain() {
      // Deliberate: whatever else in the process still refers to the module is drained too.
      while (FreeLibrary(state->library.Get()) != FALSE) {
      }
      state->library.Release();
    }
  } drain;
  Log("Freeing NLS library");
}

int iiiDisplayMsgBox(const std::string &text, UINT type) {
  CloseSplash();
  if ((type & kIconBits) == MB_ICONERROR) {
    Session().messageShown = true;
  }
  const std::string line =
      Format("QVCA %s MB %s: %s", Session().topLevelAction.c_str(), SeverityOf(type), text.c_str());
  LogLine(line);
  SendToInstallerLog(line);

  std::string level;
  if (!GetProperty("UILevel", level, kLongLength) || DecimalValue(level) == kNoUserInterface) {
    return 0;
  }
  std::string languageCode;
  if (!GetProperty("ZQVLANGUAGECODE", languageCode, kLongLength)) {
    return 0;
  }
  std::string caption;
  if (!iwiLoadNlsString(caption, message::kCaption)) {
    caption = kFallbackCaption;
  }
  const HWND owner = GetForegroundWindow();
  const int answer = MessageBoxExA(owner, text.c_str(), caption.c_str(), type, ButtonLanguageOf(languageCode));
  return answer != 0 ? answer : MessageBoxA(owner, text.c_str(), caption.c_str(), type);
}

void CloseSplash() {
  bool found = false;
  for (;;) {
    const HWND window = FindSplash();
    if (window == nullptr) {
      break;
    }
    if (found) {
      Sleep(kSplashPause);
      continue;
    }
    found = true;
    Log("Closing splash window (class %s)", kSplashClass);
    PostMessageA(window, WM_CLOSE, 0, 0);
  }
  if (!found) {
    Log("Splash bitmap not running");
  }
}

bool IsSplashShown() { return FindSplash() != nullptr; }

bool FormatInserts(std::string &text, const std::string &format, const char *a1, const char *a2, const char *a3,
                   const char *a4) {
  // A text may name inserts up to %99; those that nobody gives are empty.
  static char none[] = "";
  std::array<char *, 99> inserts;
  inserts.fill(none);
  std::size_t at = 0;
  for (const char *given : {a1, a2, a3, a4}) {
    inserts[at++] = const_cast<char *>(given);
  }
  std::array<char, kMessageLength> buffer{};
  const DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ARGUMENT_ARRAY, format.c_str(), 0, 0,
                                      buffer.data(), kMessageLength, inserts.data());
  if (length == 0) {
    Log("***Error %d from FormatMessage(), '%s'", static_cast<int>(GetLastError()), format.c_str());
    text = format;
    return false;
  }
  text.assign(buffer.data(), length);
  return true;
}

std::string FillInsert(const std::string &format, const char *insert, const std::string &value) {
  for (const std::string_view form : {std::string_view(insert), kNumberedInsert, kTextInsert, kNumberInsert}) {
    const std::size_t at = format.find(form);
    std::string text = format;
    if (at != std::string::npos && form == kNumberedInsert) {
      FormatInserts(text, format, value.c_str());
      return text;
    }
    if (at != std::string::npos) {
      return text.replace(at, form.size(), value);
    }
  }
  return format;
}

}  // namespace zqv
