// Uses the dialogs of an installation, by messages to their windows alone.
//
//   dialogs.exe COMMAND...
//
// starts the command and takes orders from its standard input, in UTF-8, one a line, fields parted by tabs:
//
//   next              waits for a dialog or message box in front of all others that is not the one before
//   look              what is on the dialog
//   press TEXT        presses the button, or chooses the radio button or check box, that has this text
//   set TEXT          replaces the text of the edit control
//   key CODE          presses a key, by its virtual-key code, where the focus is
//   alt LETTER        presses an accelerator
//   painted           waits until the dialog has nothing left to paint
//
// Each answer is lines that end with one of a single dot. `next` gives "dialog TITLE LEFT TOP WIDTH HEIGHT" or, when
// the command has ended instead, "end CODE". `look` gives "CLASS STATES TEXT" for each control that can be seen, the
// states being "enabled" and "checked", and behind a list box "row  TEXT" for each of its rows. Others give "none"
// where there is no such control.

#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

namespace {

constexpr DWORD kPause = 20;  // milliseconds between two looks at the windows
constexpr LPARAM kAltIsDown = 1 << 29;

HANDLE process;
HWND dialog;  // the one in front; null: none yet

/// A text as a field of an answer: line ends and tabs are blanks.
std::string Field(const std::wstring &text) {
  std::string field(3 * text.size(), '\0');
  field.resize(WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), field.data(),
                                   static_cast<int>(field.size()), nullptr, nullptr));
  for (char &letter : field) {
    letter = letter == '\r' || letter == '\n' || letter == '\t' ? ' ' : letter;
  }
  return field;
}

std::wstring FromField(const std::string &field) {
  std::wstring text(field.size(), L'\0');
  text.resize(MultiByteToWideChar(CP_UTF8, 0, field.data(), static_cast<int>(field.size()), text.data(),
                                  static_cast<int>(text.size())));
  return text;
}

std::wstring TextOf(HWND window) {
  std::wstring text(SendMessageW(window, WM_GETTEXTLENGTH, 0, 0) + 1, L'\0');
  text.resize(SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data())));
  return text;
}

std::wstring RowOf(HWND list, LRESULT row) {
  std::wstring text(SendMessageW(list, LB_GETTEXTLEN, row, 0) + 1, L'\0');
  text.resize(SendMessageW(list, LB_GETTEXT, row, reinterpret_cast<LPARAM>(text.data())));
  return text;
}

std::wstring ClassOf(HWND window) {
  wchar_t name[256] = L"";
  GetClassNameW(window, name, 256);
  return name;
}

using Test = std::function<bool(HWND)>;

struct Search {
  const Test &test;
  HWND found;
};

BOOL CALLBACK Visit(HWND window, LPARAM argument) {
  auto &search = *reinterpret_cast<Search *>(argument);
  search.found = IsWindowVisible(window) && search.test(window) ? window : nullptr;
  return search.found == nullptr ? TRUE : FALSE;
}

/// The first window that can be seen and for which the test holds: of those below `parent` or, where it is null, of
/// those on the desktop, from the front. Null: none.
HWND Find(HWND parent, const Test &test) {
  Search search{test, nullptr};
  const auto argument = reinterpret_cast<LPARAM>(&search);
  parent != nullptr ? EnumChildWindows(parent, Visit, argument) : EnumWindows(Visit, argument);
  return search.found;
}

/// A message box is of a process of its own, so that the process tells nothing.
bool IsDialogInUse(HWND window) {
  const std::wstring kind = ClassOf(window);
  return IsWindowEnabled(window) && (kind == L"MsiDialogCloseClass" || kind == L"#32770");
}

void Next() {
  for (;;) {
    // In this order: what was there before the end is seen.
    const bool ended = WaitForSingleObject(process, kPause) == WAIT_OBJECT_0;
    const HWND front = Find(nullptr, IsDialogInUse);
    // Without a message, which a dialog that is about to go might never answer.
    wchar_t title[256] = L"";
    if (front != nullptr && front != dialog && GetWindowTextW(front, title, 256) > 0) {
      dialog = front;
      RECT area{};
      GetWindowRect(dialog, &area);
      std::printf("dialog\t%s\t%ld\t%ld\t%ld\t%ld\n", Field(title).c_str(), area.left, area.top, area.right - area.left,
                  area.bottom - area.top);
      return;
    }
    if (ended) {
      DWORD code = 0;
      GetExitCodeProcess(process, &code);
      std::printf("end\t%lu\n", code);
      return;
    }
  }
}

void Look() {
  Find(dialog, [](HWND control) {
    const std::wstring kind = ClassOf(control);
    const bool checked = kind == L"Button" && SendMessageW(control, BM_GETCHECK, 0, 0) == BST_CHECKED;
    std::printf("%s\t%s%s\t%s\n", Field(kind).c_str(), IsWindowEnabled(control) ? "enabled " : "",
                checked ? "checked" : "", Field(TextOf(control)).c_str());
    const LRESULT rows = kind == L"ListBox" ? SendMessageW(control, LB_GETCOUNT, 0, 0) : 0;
    for (LRESULT row = 0; row < rows; ++row) {
      std::printf("row\t\t%s\n", Field(RowOf(control, row)).c_str());
    }
    return false;
  });
}

void Press(HWND button) {
  const LONG kind = GetWindowLongW(button, GWL_STYLE) & BS_TYPEMASK;
  if (kind == BS_PUSHBUTTON || kind == BS_DEFPUSHBUTTON) {
    // What it begins may last: nobody waits for it here.
    PostMessageW(button, BM_CLICK, 0, 0);
  } else {
    SendMessageW(button, BM_CLICK, 0, 0);
  }
}

/// A key goes to whatever has the focus, once something has.
void PostKey(UINT message, WPARAM key, LPARAM state) {
  GUITHREADINFO thread{};
  thread.cbSize = sizeof thread;
  while (GetGUIThreadInfo(GetWindowThreadProcessId(dialog, nullptr), &thread) && thread.hwndFocus == nullptr) {
    Sleep(kPause);
  }
  PostMessageW(thread.hwndFocus, message, key, state);
}

void WaitUntilPainted() {
  const Test isUnpainted = [](HWND window) { return GetUpdateRect(window, nullptr, FALSE) != FALSE; };
  while (isUnpainted(dialog) || Find(dialog, isUnpainted) != nullptr) {
    Sleep(kPause);
  }
}

void Obey(const std::string &order, const std::string &argument) {
  const std::wstring text = FromField(argument);
  bool found = true;
  if (order == "next") {
    Next();
  } else if (order == "look") {
    Look();
  } else if (order == "press") {
    const HWND button = Find(dialog, [&](HWND window) {
      return ClassOf(window) == L"Button" && IsWindowEnabled(window) && TextOf(window) == text;
    });
    found = button != nullptr;
    Press(button);
  } else if (order == "set") {
    const HWND edit = Find(dialog, [](HWND window) { return ClassOf(window) == L"Edit"; });
    found = edit != nullptr;
    SendMessageW(edit, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
  } else if (order == "key") {
    PostKey(WM_KEYDOWN, std::atoi(argument.c_str()), 0);
  } else if (order == "alt") {
    PostKey(WM_SYSCHAR, text[0], kAltIsDown);
  } else if (order == "painted") {
    WaitUntilPainted();
  }
  std::puts(found ? "." : "none\n.");
  std::fflush(stdout);
}

}  // namespace

int main() {
  // Behind the program's name, the command line is the command, as it is.
  wchar_t *command = GetCommandLineW();
  command += *command == L'"' ? wcscspn(command + 1, L"\"") + 2 : wcscspn(command, L" ");
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION started{};
  if (CreateProcessW(nullptr, command + wcsspn(command, L" "), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                     &started) == FALSE) {
    return 1;
  }
  process = started.hProcess;
  char line[4096];
  while (std::fgets(line, sizeof line, stdin) != nullptr) {
    std::string order = line;
    order.resize(order.find_last_not_of("\r\n") + 1);
    const std::size_t end = order.find('\t');
    Obey(order.substr(0, end), end == std::string::npos ? "" : order.substr(end + 1));
  }
  return 0;
}
