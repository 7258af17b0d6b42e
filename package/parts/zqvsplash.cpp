// The product's splash window, as far as an installation sees it: it is shown until somebody closes it.
//
// zqvsplash.exe says so on its standard output once the window is there, and ends with the window.

#include <windows.h>

#include <cstdio>

namespace {

constexpr const char *kClass = "ZQVQVSeriesSplash";  // by which the library finds it
constexpr const char *kText = "Vantrel QV";
constexpr int kWidth = 320;
constexpr int kHeight = 120;

LRESULT CALLBACK Handle(HWND window, UINT message, WPARAM first, LPARAM second) {
  if (message == WM_DESTROY) {
    PostQuitMessage(0);
  }
  if (message != WM_PAINT) {
    return DefWindowProcA(window, message, first, second);
  }
  PAINTSTRUCT paint;
  RECT area;
  const HDC context = BeginPaint(window, &paint);
  GetClientRect(window, &area);
  DrawTextA(context, kText, -1, &area, DT_CENTER | DT_VCENTER | DT_SINGLELINE);
  EndPaint(window, &paint);
  return 0;
}

}  // namespace

int main() {
  WNDCLASSA kind{};
  kind.lpfnWndProc = Handle;
  kind.hInstance = GetModuleHandleA(nullptr);
  kind.hbrBackground = GetSysColorBrush(COLOR_WINDOW);
  kind.lpszClassName = kClass;
  RegisterClassA(&kind);
  const int left = (GetSystemMetrics(SM_CXSCREEN) - kWidth) / 2;
  const int top = (GetSystemMetrics(SM_CYSCREEN) - kHeight) / 2;
  if (CreateWindowExA(WS_EX_TOPMOST | WS_EX_TOOLWINDOW, kClass, kText, WS_POPUP | WS_BORDER | WS_VISIBLE, left, top,
                      kWidth, kHeight, nullptr, nullptr, kind.hInstance, nullptr) == nullptr) {
    return 1;
  }
  std::puts("shown");
  std::fflush(stdout);
  MSG message;
  while (GetMessageA(&message, nullptr, 0, 0) > 0) {
    DispatchMessageA(&message);
  }
  return 0;
}
