#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "platform/msi.h"
#include "platform/win32.h"

/// The stand-in platform: a small world that answers every platform call of the library. A test fills its members,
/// runs an action and looks at the members again. It is stricter than a real machine: output buffers are filled with
/// junk beyond what a call returns, a call that succeeds leaves a garbage last error, out parameters stay untouched by
/// a call that fails, and every open handle is counted.

/// Orders names as Windows compares paths, keys and variables: without regard to the case of ASCII letters.
struct IgnoreCase {
  bool operator()(const std::string &a, const std::string &b) const;
};
using NameSet = std::set<std::string, IgnoreCase>;
template <typename T>
using NameMap = std::map<std::string, T, IgnoreCase>;

using Bytes = std::vector<BYTE>;
using Cell = std::variant<std::monostate, int, std::string, Bytes>;  // nothing, integer, text, stream
using Row = std::vector<Cell>;

struct Table {
  std::vector<std::string> columns;
  std::vector<Row> rows;
  std::size_t keys = 1;  // how many of the first columns are the primary key
};

struct InstallState {
  INSTALLSTATE installed = INSTALLSTATE_ABSENT;
  INSTALLSTATE action = INSTALLSTATE_UNKNOWN;
};

struct Message {
  int type;
  Row fields;  // fields[0] is the template
};

struct Module {
  std::map<UINT, std::string> strings;
  std::map<std::string, FARPROC> procs;
  int loads = 0;
};

struct Program {
  DWORD error = 0;  // the launch fails with this
  std::uint64_t runtimeMs = 0;
  DWORD exitCode = 0;
  std::function<void()> onLaunch;
  bool hasProcess = true;  // false: the launch succeeds without a process handle, as a document's may
};

struct Service {
  DWORD state = 4;           // running
  std::uint64_t stopMs = 0;  // how long it takes to stop once it is asked to
  std::uint64_t stopsAt = ~std::uint64_t{0};
  std::string displayName;
};

struct Launch {
  std::string file, parameters, folder, verb;
  int show;
  DWORD mask;
};

struct Box {
  std::string text, caption;
  UINT type;
  int language;  // -1: none was asked for
};

struct RegistryValue {
  DWORD type;
  std::string bytes;
  static RegistryValue Text(const std::string &text) { return {REG_SZ, text + '\0'}; }
  static RegistryValue Number(DWORD number) { return {REG_DWORD, {reinterpret_cast<const char *>(&number), 4}}; }
};

/// What an open handle stands for; each kind uses the members that it needs.
struct OpenObject {
  explicit OpenObject(const char *itsKind, std::string itsName = "") : kind(itsKind), name(std::move(itsName)) {}
  std::string kind;  // record, view, database, file, mutex, process, search, key, stream
  std::string name;  // table, path, mutex or key
  Row fields;
  std::map<UINT, std::size_t> streamRead;
  std::vector<std::size_t> columns;
  std::optional<std::pair<std::size_t, std::string>> where;
  bool executed = false;
  std::size_t next = 0;
  DWORD access = 0, share = 0;
  std::vector<WIN32_FIND_DATAA> found;
  std::uint64_t endsAt = 0;
  DWORD exitCode = 0;
};

/// Where a Windows path leads to in the scratch folder.
struct Place {
  std::string name;  // the full Windows path
  std::string host;
  bool parentExists = false, exists = false, isRoot = false;
  DWORD attributes = 0;
};

inline constexpr MSIHANDLE kSession = 3;
inline constexpr std::uint64_t kForever = ~std::uint64_t{0};

struct World {
  World();
  ~World();
  World(const World &) = delete;
  World &operator=(const World &) = delete;

  // The session. In a deferred action (mode 16, 17 or 18) only CustomActionData can be read and nothing set.
  std::map<std::string, std::string> properties;
  std::set<int> modes;
  std::vector<Message> messages;
  std::vector<std::string> installerLog;  // field 1 of the INFO messages
  int messageAnswer = 1;
  std::function<void(const Message &)> onMessage;  // runs before the answer is given, and may change it
  std::map<std::string, Table> tables;
  std::map<std::string, std::vector<Row>> temporaryRows;  // what was inserted, by table; `tables` has them too
  std::map<std::string, InstallState> features, components;
  std::vector<int> installLevels;  // each that was set
  std::map<std::string, std::string> sourcePaths;
  NameMap<std::vector<std::string>> relatedProducts;        // product codes by upgrade code
  NameMap<std::map<std::string, std::string>> productInfo;  // attributes by product code

  // Files: the sets and maps hold full Windows paths, with backslashes.
  NameSet drives{"c"};
  NameSet held;         // open in another process, shared with nobody
  NameSet deniedPaths;  // no access
  NameSet failWritesTo;
  NameMap<DWORD> attributes;  // read-only, hidden, system…; a file that is not in it has the archive bit
  std::vector<std::string> rebootDeletes;
  void WriteFile(const std::string &path, std::string_view bytes);  // makes missing folders
  std::optional<std::string> ReadFile(const std::string &path);
  void MakeFolder(const std::string &path);
  void MakeJunction(const std::string &path, const std::string &target);
  bool Exists(const std::string &path);
  std::string HostPath(const std::string &path);

  // Time, user, modules, environment, windows.
  std::uint64_t clockMs = 1709634315000;  // since 1970; Tuesday 5 March 2024, 10:25:15
  std::uint64_t slept = 0;                // milliseconds, all Sleep calls together
  std::function<void(DWORD)> onSleep;
  std::string userName = "tester";
  std::multiset<std::string> mutexes;
  NameMap<Module> modules;  // by path, as it is loaded
  NameMap<std::string> environment;
  std::vector<Box> boxes;
  int boxAnswer = 1;
  NameMap<int> windows;  // by class: how often it is still found after WM_CLOSE; below zero: it ignores WM_CLOSE
  NameSet closingWindows;
  std::vector<std::pair<std::string, UINT>> posted;

  // The registry: by "hklm\path", "hkcu\path" or "hkcr\path", then by value name.
  NameMap<NameMap<RegistryValue>> registry;
  NameSet deniedKeys;
  std::vector<std::pair<std::string, DWORD>> openedKeys;  // each key ever asked for, with the access

  NameMap<Program> programs;  // by the file as it is launched; any other is not found
  std::vector<Launch> launched;
  NameMap<Service> services;
  std::map<DWORD, std::string> processes;   // image paths by identifier; one that is terminated lets go of its image
  void MakePsapi(const std::string &path);  // a process-status library

  // Handles.
  std::map<std::string, int> openHandles;  // by kind; "module" counts loads
  std::vector<std::string> badCloses;
  int OpenHandles() const;

  // Counting and failing. `failAt` counts all calls that can fail, from 1; `failCall.nth` those of one name (0: each).
  int calls = 0;
  std::map<std::string, int> callCount;
  int failAt = 0;
  DWORD failCode = 1627;
  struct {
    std::string name;
    int nth = 0;
    DWORD code = 1627;
  } failCall;
  std::string failedCall;                        // the last call that was made to fail
  std::function<void(std::string_view)> onCall;  // runs before each counted call

  // For the stand-in's own files.
  DWORD lastError = 0;
  std::string root;
  std::map<std::uintptr_t, OpenObject> objects;
  DWORD Count(const char *name);
  bool Deferred() const { return modes.count(16) || modes.count(17) || modes.count(18); }
  Place Find(const char *path);
  Place FindExisting(const char *path);
  std::uintptr_t Open(OpenObject object);
  OpenObject &Object(std::uintptr_t handle, const char *kind);
  DWORD Close(const char *call, std::uintptr_t handle, const std::set<std::string> &kinds);
};

World &TheWorld();

/// Puts a fresh world in the place of the old one, whose scratch folder goes.
World &ResetWorld();
