// Drives the dialogs of an installation, by messages to their windows alone.
//
//   dialogs.exe COMMAND...
//
// starts the command and takes orders from its standard input, in UTF-8, one a line, fields parted by tabs:
//
//   next              waits for a dialog, or message box, in front of all others that is not the one before
//   look              what is on the dialog
//   press TEXT        presses the button, or chooses the radio button or check box, that has this text
//   set N TEXT        replaces the text of the n-th edit control, from 1
//   key CODE          presses a key, by its virtual-key code, where the focus is
//   alt LETTER        presses an accelerator
//
// Each answer is lines that end with one of a single dot: "dialog TITLE LEFT TOP WIDTH HEIGHT" or, when the command has
// ended instead, "end CODE", and
// "behind" for each dialog behind it; for `look`, "CLASS STATES TEXT" for each control, the states being some of
// "enabled", "checked" and "focus", and "row TEXT" for each row behind its list box; "none" where there is no such
// control.

#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

namespace {

constexpr LPARAM kAltIsDown = 1 << 29;
constexpr DWORD kLook = 20;  // milliseconds between two looks at the windows

HANDLE process;
HWND dialog;  // the one in front; null: none yet

std::string FromWide(const std::wstring &text) {
  const int count =
      WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0, nullptr, nullptr);
  std::string bytes(count, '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), bytes.data(), count, nullptr, nullptr);
  return bytes;
}

std::wstring ToWide(const std::string &bytes) {
  const int count = MultiByteToWideChar(CP_UTF8, 0, bytes.data(), static_cast<int>(bytes.size()), nullptr, 0);
  std::wstring text(count, L'\0');
  MultiByteToWideChar(CP_UTF8, 0, bytes.data(), static_cast<int>(bytes.size()), text.data(), count);
  return text;
}

/// A text as a field of an answer: line ends and tabs are blanks.
std::string Field(const std::wstring &text) {
  std::string field = FromWide(text);
  for (char &letter : field) {
    letter = letter == '\r' || letter == '\n' || letter == '\t' ? ' ' : letter;
  }
  return field;
}

/// The text that two messages give: one its length, the other itself.
std::wstring TextOf(HWND window, UINT lengthMessage, UINT textMessage, WPARAM which) {
  const LRESULT length = SendMessageW(window, lengthMessage, textMessage == WM_GETTEXT ? 0 : which, 0);
  std::wstring text(length > 0 ? length + 1 : 1, L'\0');
  const LRESULT got = SendMessageW(window, textMessage, textMessage == WM_GETTEXT ? text.size() : which,
                                   reinterpret_cast<LPARAM>(text.data()));
  text.resize(got > 0 ? got : 0);
  return text;
}

std::wstring TextOf(HWND window) { return TextOf(window, WM_GETTEXTLENGTH, WM_GETTEXT, 0); }

std::wstring ClassOf(HWND window) {
  wchar_t name[256] = L"";
  GetClassNameW(window, name, 256);
  return name;
}

using Visitor = std::function<bool(HWND)>;

BOOL CALLBACK Visit(HWND window, LPARAM visitor) {
  return (*reinterpret_cast<Visitor *>(visitor))(window) ? TRUE : FALSE;
}

/// The first window for which the test holds, of the dialog's controls, or, without a dialog, of those in front.
HWND Find(HWND parent, const std::function<bool(HWND)> &test) {
  HWND found = nullptr;
  Visitor visitor = [&](HWND window) {
    found = test(window) ? window : nullptr;
    return found == nullptr;
  };
  const auto argument = reinterpret_cast<LPARAM>(&visitor);
  parent != nullptr ? EnumChildWindows(parent, Visit, argument) : EnumWindows(Visit, argument);
  return found;
}

/// Whether a window is a dialog of the installer, or a message box, which is of a process of its own.
bool IsDialog(HWND window) {
  const std::wstring kind = ClassOf(window);
  return (kind == L"MsiDialogCloseClass" || kind == L"#32770") && IsWindowVisible(window);
}

void Tell(const char *what, HWND window) {
  RECT area{};
  GetWindowRect(window, &area);
  std::printf("%s\t%s\t%ld\t%ld\t%ld\t%ld\n", what, Field(TextOf(window)).c_str(), area.left, area.top,
              area.right - area.left, area.bottom - area.top);
}

void Next() {
  for (;;) {
    const bool ended = WaitForSingleObject(process, kLook) == WAIT_OBJECT_0;
    const HWND front = Find(nullptr, [](HWND window) { return IsDialog(window) && IsWindowEnabled(window); });
    if (ended) {
      DWORD code = 0;
      GetExitCodeProcess(process, &code);
      std::printf("end\t%lu\n", code);
      return;
    }
    if (front != nullptr && front != dialog) {
      dialog = front;
      Tell("dialog", dialog);
      Find(nullptr, [front](HWND window) {
        if (IsDialog(window) && window != front) {
          Tell("behind", window);
        }
        return false;
      });
      return;
    }
  }
}

/// The control that has the focus, once there is one.
HWND Focus() {
  GUITHREADINFO thread{};
  thread.cbSize = sizeof thread;
  while (GetGUIThreadInfo(GetWindowThreadProcessId(dialog, nullptr), &thread) && thread.hwndFocus == nullptr) {
    Sleep(kLook);
  }
  return thread.hwndFocus;
}

void Look() {
  const HWND focus = Focus();
  Find(dialog, [&](HWND control) {
    if (!IsWindowVisible(control)) {
      return false;
    }
    const std::wstring kind = ClassOf(control);
    std::string states = IsWindowEnabled(control) ? "enabled" : "";
    if (kind == L"Button" && SendMessageW(control, BM_GETCHECK, 0, 0) == BST_CHECKED) {
      states += " checked";
    }
    states += control == focus ? " focus" : "";
    std::printf("%s\t%s\t%s\n", FromWide(kind).c_str(), states.c_str(), Field(TextOf(control)).c_str());
    const LRESULT rows = kind == L"ListBox" ? SendMessageW(control, LB_GETCOUNT, 0, 0) : 0;
    for (LRESULT row = 0; row < rows; ++row) {
      std::printf("row\t\t%s\n", Field(TextOf(control, LB_GETTEXTLEN, LB_GETTEXT, row)).c_str());
    }
    return false;
  });
}

void Press(const std::wstring &text) {
  const HWND button = Find(dialog, [&](HWND control) {
    return ClassOf(control) == L"Button" && IsWindowVisible(control) && IsWindowEnabled(control) &&
           TextOf(control) == text;
  });
  const LONG kind = button != nullptr ? GetWindowLongW(button, GWL_STYLE) & BS_TYPEMASK : 0;
  if (button == nullptr) {
    std::puts("none");
  } else if (kind == BS_PUSHBUTTON || kind == BS_DEFPUSHBUTTON) {
    // What it opens may last: nobody waits for it here.
    PostMessageW(button, BM_CLICK, 0, 0);
  } else {
    SendMessageW(button, BM_CLICK, 0, 0);
  }
}

void Set(int number, const std::wstring &text) {
  const HWND edit = Find(dialog, [&](HWND control) {
    const std::wstring kind = ClassOf(control);
    return IsWindowVisible(control) && (kind == L"Edit" || kind == L"RichEdit20W") && --number == 0;
  });
  if (edit == nullptr) {
    std::puts("none");
    return;
  }
  SendMessageW(edit, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
}

void Obey(const std::vector<std::string> &fields) {
  const std::string &order = fields[0];
  const std::string second = fields.size() > 1 ? fields[1] : "";
  if (order == "next") {
    Next();
  } else if (order == "look") {
    Look();
  } else if (order == "press") {
    Press(ToWide(second));
  } else if (order == "set") {
    Set(std::atoi(second.c_str()), ToWide(fields.size() > 2 ? fields[2] : ""));
  } else if (order == "key") {
    PostMessageW(Focus(), WM_KEYDOWN, std::atoi(second.c_str()), 0);
  } else if (order == "alt") {
    PostMessageW(Focus(), WM_SYSCHAR, second.front(), kAltIsDown);
  } else {
    std::puts("unknown");
  }
}

}  // namespace

int main() {
  // The rest of the command line is the command, as it is.
  wchar_t *command = GetCommandLineW();
  const wchar_t end = *command == L'"' ? *command++ : L' ';
  while (*command != L'\0' && *command != end) {
    ++command;
  }
  command += *command == L'"' ? 1 : 0;
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION started{};
  if (!CreateProcessW(nullptr, command + wcsspn(command, L" "), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                      &started)) {
    return 1;
  }
  process = started.hProcess;
  char line[4096];
  while (std::fgets(line, sizeof line, stdin) != nullptr) {
    std::vector<std::string> fields(1);
    for (const char *at = line; *at != '\0' && *at != '\r' && *at != '\n'; ++at) {
      *at == '\t' ? fields.emplace_back() : fields.back() += *at;
    }
    Obey(fields);
    std::puts(".");
    std::fflush(stdout);
  }
  return 0;
}
