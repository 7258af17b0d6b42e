#pragma once

/// The Win32 operations that the library calls, as Windows' own headers declare them. On any other host this header
/// declares those same operations with the widths of 32-bit Windows, and a test supplies them.

#ifdef _WIN32

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <shellapi.h>

#else

#include <cstdint>

#define WINAPI
#define CALLBACK
#define __stdcall

using BOOL = int;
using BYTE = std::uint8_t;
using WCHAR = char16_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using LONG = std::int32_t;
using UINT = unsigned int;
using LCID = DWORD;
using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using HANDLE = void *;
using HMODULE = struct ModuleTag *;
using HINSTANCE = HMODULE;
using HWND = struct WindowTag *;
using HKEY = struct KeyTag *;
using LPSTR = char *;
using LPCSTR = const char *;
using FARPROC = std::intptr_t(WINAPI *)();

// NOLINTBEGIN(readability-identifier-naming): the system's own names
constexpr BOOL FALSE = 0;
constexpr BOOL TRUE = 1;
constexpr DWORD MAX_PATH = 260;
constexpr DWORD INFINITE = 0xFFFFFFFF;
inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(std::intptr_t{-1});

// Error codes.
constexpr LONG ERROR_SUCCESS = 0;
constexpr LONG ERROR_FILE_NOT_FOUND = 2;
constexpr LONG ERROR_PATH_NOT_FOUND = 3;
constexpr LONG ERROR_ACCESS_DENIED = 5;
constexpr LONG ERROR_INVALID_HANDLE = 6;
constexpr LONG ERROR_NO_MORE_FILES = 18;
constexpr LONG ERROR_SHARING_VIOLATION = 32;
constexpr LONG ERROR_FILE_EXISTS = 80;
constexpr LONG ERROR_INVALID_PARAMETER = 87;
constexpr LONG ERROR_INSUFFICIENT_BUFFER = 122;
constexpr LONG ERROR_INVALID_NAME = 123;
constexpr LONG ERROR_MOD_NOT_FOUND = 126;
constexpr LONG ERROR_PROC_NOT_FOUND = 127;
constexpr LONG ERROR_DIR_NOT_EMPTY = 145;
constexpr LONG ERROR_ALREADY_EXISTS = 183;
constexpr LONG ERROR_MORE_DATA = 234;
constexpr LONG ERROR_NO_MORE_ITEMS = 259;
constexpr LONG ERROR_DIRECTORY = 267;
constexpr LONG ERROR_CANCELLED = 1223;
constexpr LONG ERROR_INSTALL_USEREXIT = 1602;
constexpr LONG ERROR_INSTALL_FAILURE = 1603;

struct FILETIME {
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
};

struct SYSTEMTIME {
  WORD wYear;
  WORD wMonth;
  WORD wDayOfWeek;
  WORD wDay;
  WORD wHour;
  WORD wMinute;
  WORD wSecond;
  WORD wMilliseconds;
};

extern "C" {

DWORD GetLastError();
void SetLastError(DWORD code);
void Sleep(DWORD milliseconds);
void GetLocalTime(SYSTEMTIME *time);
BOOL FileTimeToSystemTime(const FILETIME *fileTime, SYSTEMTIME *time);

// The system.

struct OSVERSIONINFOA {
  DWORD dwOSVersionInfoSize;
  DWORD dwMajorVersion;
  DWORD dwMinorVersion;
  DWORD dwBuildNumber;
  DWORD dwPlatformId;
  char szCSDVersion[128];
};

struct OSVERSIONINFOEXA : OSVERSIONINFOA {
  WORD wServicePackMajor;
  WORD wServicePackMinor;
  WORD wSuiteMask;
  BYTE wProductType;
  BYTE wReserved;
};

BOOL GetVersionExA(OSVERSIONINFOA *info);

// The code page.

constexpr UINT CP_ACP = 0;
constexpr DWORD MB_ERR_INVALID_CHARS = 8;
constexpr DWORD LCMAP_UPPERCASE = 0x200;

BOOL IsDBCSLeadByte(BYTE byte);
int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR text, int length, WCHAR *buffer, int capacity);
int LCMapStringW(LCID locale, DWORD flags, const WCHAR *text, int length, WCHAR *buffer, int capacity);

// Handles and objects.

struct SECURITY_ATTRIBUTES;
BOOL CloseHandle(HANDLE handle);
HANDLE CreateMutexA(SECURITY_ATTRIBUTES *attributes, BOOL initialOwner, LPCSTR name);

// Files.

constexpr DWORD GENERIC_READ = 0x80000000;
constexpr DWORD GENERIC_WRITE = 0x40000000;
constexpr DWORD FILE_LIST_DIRECTORY = 1;
constexpr DWORD FILE_SHARE_READ = 1;
constexpr DWORD FILE_SHARE_WRITE = 2;
constexpr DWORD CREATE_NEW = 1;
constexpr DWORD CREATE_ALWAYS = 2;
constexpr DWORD OPEN_EXISTING = 3;
constexpr DWORD FILE_ATTRIBUTE_READONLY = 0x1;
constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
constexpr DWORD FILE_ATTRIBUTE_REPARSE_POINT = 0x400;
constexpr DWORD FILE_FLAG_OPEN_REPARSE_POINT = 0x200000;
constexpr DWORD FILE_FLAG_BACKUP_SEMANTICS = 0x2000000;
constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;
constexpr DWORD INVALID_FILE_SIZE = 0xFFFFFFFF;
constexpr DWORD MOVEFILE_DELAY_UNTIL_REBOOT = 4;
constexpr UINT DRIVE_REMOTE = 4;

struct WIN32_FIND_DATAA {
  DWORD dwFileAttributes;
  FILETIME ftCreationTime;
  FILETIME ftLastAccessTime;
  FILETIME ftLastWriteTime;
  DWORD nFileSizeHigh;
  DWORD nFileSizeLow;
  DWORD dwReserved0;
  DWORD dwReserved1;
  char cFileName[MAX_PATH];
  char cAlternateFileName[14];
};

struct BY_HANDLE_FILE_INFORMATION {
  DWORD dwFileAttributes;
  FILETIME ftCreationTime;
  FILETIME ftLastAccessTime;
  FILETIME ftLastWriteTime;
  DWORD dwVolumeSerialNumber;
  DWORD nFileSizeHigh;
  DWORD nFileSizeLow;
  DWORD nNumberOfLinks;
  DWORD nFileIndexHigh;
  DWORD nFileIndexLow;
};

using LPPROGRESS_ROUTINE = void *;

HANDLE CreateFileA(LPCSTR path, DWORD access, DWORD share, SECURITY_ATTRIBUTES *attributes, DWORD disposition,
                   DWORD flags, HANDLE model);
BOOL GetFileInformationByHandle(HANDLE file, BY_HANDLE_FILE_INFORMATION *information);
DWORD GetFileSize(HANDLE file, DWORD *high);
BOOL DeleteFileA(LPCSTR path);
BOOL CreateDirectoryA(LPCSTR path, SECURITY_ATTRIBUTES *attributes);
BOOL RemoveDirectoryA(LPCSTR path);
BOOL MoveFileExA(LPCSTR from, LPCSTR to, DWORD flags);
BOOL CopyFileExA(LPCSTR from, LPCSTR to, LPPROGRESS_ROUTINE progress, void *data, BOOL *cancel, DWORD flags);
HANDLE FindFirstFileA(LPCSTR pattern, WIN32_FIND_DATAA *found);
BOOL FindNextFileA(HANDLE search, WIN32_FIND_DATAA *found);
BOOL FindClose(HANDLE search);
DWORD GetFileAttributesA(LPCSTR path);
BOOL SetFileAttributesA(LPCSTR path, DWORD attributes);
UINT GetDriveTypeA(LPCSTR root);
UINT GetSystemDirectoryA(LPSTR buffer, UINT capacity);
BOOL GetVolumeInformationA(LPCSTR root, LPSTR label, DWORD capacity, DWORD *serialNumber, DWORD *longestElement,
                           DWORD *flags, LPSTR fileSystem, DWORD fileSystemCapacity);

// Modules and their strings.

constexpr DWORD LOAD_LIBRARY_AS_DATAFILE = 2;
constexpr DWORD LOAD_WITH_ALTERED_SEARCH_PATH = 8;

HMODULE LoadLibraryExA(LPCSTR path, HANDLE reserved, DWORD flags);
BOOL FreeLibrary(HMODULE module);
FARPROC GetProcAddress(HMODULE module, LPCSTR name);
int LoadStringA(HINSTANCE module, UINT id, LPSTR buffer, int capacity);

// Processes.

constexpr DWORD WAIT_OBJECT_0 = 0;
constexpr DWORD WAIT_TIMEOUT = 258;
constexpr DWORD STILL_ACTIVE = 259;
constexpr DWORD SEE_MASK_NOCLOSEPROCESS = 0x40;
constexpr DWORD SEE_MASK_FLAG_NO_UI = 0x400;

struct SHELLEXECUTEINFOA {
  DWORD cbSize;
  DWORD fMask;
  HWND hwnd;
  LPCSTR lpVerb;
  LPCSTR lpFile;
  LPCSTR lpParameters;
  LPCSTR lpDirectory;
  int nShow;
  HINSTANCE hInstApp;
  void *lpIDList;
  LPCSTR lpClass;
  HKEY hkeyClass;
  DWORD dwHotKey;
  HANDLE hMonitor;
  HANDLE hProcess;
};

BOOL ShellExecuteExA(SHELLEXECUTEINFOA *info);
DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds);
BOOL GetExitCodeProcess(HANDLE process, DWORD *code);

constexpr DWORD PROCESS_TERMINATE = 0x1;
constexpr DWORD PROCESS_VM_READ = 0x10;
constexpr DWORD PROCESS_QUERY_INFORMATION = 0x400;

HANDLE OpenProcess(DWORD access, BOOL inherit, DWORD id);
BOOL TerminateProcess(HANDLE process, UINT exitCode);

// Services.

using SC_HANDLE = struct ServiceTag *;

constexpr LONG ERROR_SERVICE_DOES_NOT_EXIST = 1060;
constexpr LONG ERROR_SERVICE_CANNOT_ACCEPT_CTRL = 1061;
constexpr LONG ERROR_SERVICE_NOT_ACTIVE = 1062;
constexpr LONG ERROR_EXCEPTION_IN_SERVICE = 1064;
constexpr DWORD SC_MANAGER_ALL_ACCESS = 0xF003F;
constexpr DWORD SERVICE_ALL_ACCESS = 0xF01FF;
constexpr DWORD SERVICE_QUERY_STATUS = 0x4;
constexpr DWORD SERVICE_STOP = 0x20;
constexpr DWORD SERVICE_NO_CHANGE = 0xFFFFFFFF;
constexpr DWORD SERVICE_CONTROL_STOP = 1;
constexpr DWORD SERVICE_STOPPED = 1;
constexpr DWORD SERVICE_START_PENDING = 2;
constexpr DWORD SERVICE_PAUSED = 7;

struct SERVICE_STATUS {
  DWORD dwServiceType;
  DWORD dwCurrentState;
  DWORD dwControlsAccepted;
  DWORD dwWin32ExitCode;
  DWORD dwServiceSpecificExitCode;
  DWORD dwCheckPoint;
  DWORD dwWaitHint;
};

SC_HANDLE OpenSCManagerA(LPCSTR machine, LPCSTR database, DWORD access);
SC_HANDLE OpenServiceA(SC_HANDLE manager, LPCSTR name, DWORD access);
BOOL CloseServiceHandle(SC_HANDLE handle);
BOOL QueryServiceStatus(SC_HANDLE service, SERVICE_STATUS *status);
BOOL ControlService(SC_HANDLE service, DWORD control, SERVICE_STATUS *status);
BOOL ChangeServiceConfigA(SC_HANDLE service, DWORD type, DWORD startType, DWORD errorControl, LPCSTR path, LPCSTR group,
                          DWORD *tag, LPCSTR dependencies, LPCSTR account, LPCSTR password, LPCSTR displayName);

// The registry.

inline const HKEY HKEY_CLASSES_ROOT = reinterpret_cast<HKEY>(std::uintptr_t{0x80000000});
inline const HKEY HKEY_CURRENT_USER = reinterpret_cast<HKEY>(std::uintptr_t{0x80000001});
inline const HKEY HKEY_LOCAL_MACHINE = reinterpret_cast<HKEY>(std::uintptr_t{0x80000002});
constexpr DWORD KEY_QUERY_VALUE = 1;
constexpr DWORD KEY_SET_VALUE = 2;
constexpr DWORD REG_SZ = 1;
constexpr DWORD REG_EXPAND_SZ = 2;
constexpr DWORD REG_BINARY = 3;
constexpr DWORD REG_DWORD = 4;
constexpr DWORD REG_MULTI_SZ = 7;

LONG RegOpenKeyExA(HKEY root, LPCSTR path, DWORD options, DWORD access, HKEY *key);
LONG RegCloseKey(HKEY key);
LONG RegQueryValueExA(HKEY key, LPCSTR name, DWORD *reserved, DWORD *type, BYTE *data, DWORD *size);
LONG RegQueryInfoKeyA(HKEY key, LPSTR className, DWORD *classLength, DWORD *reserved, DWORD *subkeys,
                      DWORD *longestSubkey, DWORD *longestClass, DWORD *values, DWORD *longestName, DWORD *longestData,
                      DWORD *securitySize, FILETIME *lastWrite);
LONG RegEnumValueA(HKEY key, DWORD index, LPSTR name, DWORD *nameLength, DWORD *reserved, DWORD *type, BYTE *data,
                   DWORD *size);
LONG RegSetValueExA(HKEY key, LPCSTR name, DWORD reserved, DWORD type, const BYTE *data, DWORD size);
LONG RegDeleteValueA(HKEY key, LPCSTR name);

// The environment and the user.

DWORD ExpandEnvironmentStringsA(LPCSTR source, LPSTR buffer, DWORD capacity);
BOOL SetEnvironmentVariableA(LPCSTR name, LPCSTR value);
BOOL GetUserNameA(LPSTR buffer, DWORD *length);

// Messages and windows.

constexpr DWORD FORMAT_MESSAGE_FROM_STRING = 0x400;
constexpr DWORD FORMAT_MESSAGE_ARGUMENT_ARRAY = 0x2000;
constexpr UINT MB_OK = 0;
constexpr UINT MB_ICONERROR = 0x10;
constexpr UINT MB_ICONQUESTION = 0x20;
constexpr UINT MB_ICONWARNING = 0x30;
constexpr UINT MB_ICONINFORMATION = 0x40;
constexpr UINT WM_CLOSE = 0x10;
constexpr UINT SPI_GETHIGHCONTRAST = 0x42;
constexpr DWORD HCF_HIGHCONTRASTON = 1;
constexpr int COLOR_WINDOWTEXT = 8;

struct HIGHCONTRASTA {
  UINT cbSize;
  DWORD dwFlags;
  std::uint32_t lpszDefaultScheme;  // a pointer of 32-bit Windows
};

DWORD FormatMessageA(DWORD flags, const void *source, DWORD id, DWORD language, LPSTR buffer, DWORD capacity,
                     char **arguments);
HWND GetForegroundWindow();
int MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT type);
int MessageBoxExA(HWND owner, LPCSTR text, LPCSTR caption, UINT type, WORD language);
HWND FindWindowExA(HWND parent, HWND after, LPCSTR windowClass, LPCSTR title);
BOOL SystemParametersInfoA(UINT action, UINT size, void *parameter, UINT update);
DWORD GetSysColor(int index);
BOOL PostMessageA(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

}  // extern "C"
   // NOLINTEND(readability-identifier-naming)

#endif
