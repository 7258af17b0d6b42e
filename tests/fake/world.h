#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
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

/// Orders names as Windows compares paths, keys and variables: character by character, without regard to case.
struct IgnoreCase {
  bool operator()(std::string_view a, std::string_view b) const;
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
  int keys = 1;  // how many of the columns, from the first on, are the key
};

struct InstallState {
  INSTALLSTATE installed = INSTALLSTATE_ABSENT, action = INSTALLSTATE_UNKNOWN;
};

struct Message {
  int type;
  Row fields;  // fields[0] is the template
};

/// A file; or a folder with its entries; or a junction, a folder with a target.
struct Node {
  DWORD attributes = 0x20;  // archive
  std::string bytes;
  NameMap<std::shared_ptr<Node>> entries;
  std::string target;
  bool IsFolder() const { return attributes & FILE_ATTRIBUTE_DIRECTORY; }
};

/// Where a path leads.
struct Place {
  std::string path, name;              // in full, and its last element
  std::shared_ptr<Node> folder, node;  // null: there is none
};

struct Module {
  std::map<UINT, std::string> strings;
  std::map<std::string, FARPROC> procs;
  int loads = 0;
  bool mayBeDrained = false;  // loaded as data, and no attempt to free it has failed since
};

struct Program {
  DWORD exitCode = 0;
  std::uint64_t runtimeMs = 0;
  bool hasProcess = true;  // false: the launch succeeds without a process handle, as a document's may
};

struct Launch {
  std::string file, parameters, folder, verb;
  int show;
};

struct Service {
  DWORD state = 4;           // running
  std::uint64_t stopMs = 0;  // how long it takes to stop once it is asked to
  std::uint64_t stopsAt = ~std::uint64_t{0};
  std::string displayName;
};

struct Box {
  std::string text, caption;
  UINT type;
  int language;  // -1: none was asked for
  HWND owner;
};

struct Window {
  int finds;  // how often it is still found after WM_CLOSE
  bool closing = false;
};

struct RegistryValue {
  DWORD type;
  std::string bytes;
  static RegistryValue Text(const std::string &text) { return {REG_SZ, text + '\0'}; }
};

/// What an open handle stands for; each kind uses the members that it needs.
struct OpenObject {
  std::string kind;  // record, view, database, file, stream, search, mutex, process, key, manager, service
  std::string name;  // table, path, mutex, key or service
  DWORD access = 0, share = 0;
  std::shared_ptr<Node> node;
  bool isText = false;
  std::vector<WIN32_FIND_DATAA> found;
  std::size_t next = 0;  // row, found entry or byte of the stream
  Row fields;
  std::function<std::vector<Row>()> find;
  std::vector<Row> rows;
  bool executed = false;
  DWORD process = 0, exitCode = 0;
  std::uint64_t endsAt = 0;
};

/// A call that the library has made: on what, and with which masks, modes, flags and lengths, in the call's order.
struct Asked {
  std::string call, subject;
  std::vector<DWORD> values;
  auto operator<=>(const Asked &) const = default;
};

/// While there is one the stand-in is at work, and what is allocated is not the library's.
struct AtWork {
  AtWork() { ++count; }
  ~AtWork() { --count; }
  static int count;
};

inline constexpr MSIHANDLE kSession = 3;
inline constexpr std::uint64_t kForever = ~std::uint64_t{0};

struct World {
  World();

  // The session. In a deferred action (mode 16, 17 or 18) only CustomActionData can be read and nothing set.
  std::map<std::string, std::string> properties;
  std::set<int> modes;
  std::vector<Message> messages;
  std::vector<std::string> installerLog;  // field 1 of the INFO messages
  std::map<std::string, Table> tables{
      {"Binary", {{"Name", "Data"}, {}}},
      {"Component", {{"Component"}, {}}},
      {"CustomAction", {{"Action", "Type"}, {}}},
      {"Feature", {{"Feature"}, {}}},
      {"File", {{"File", "FileName"}, {}}},
      {"RemoveFile", {{"FileKey", "Component_", "FileName", "DirProperty", "InstallMode"}, {}}},
      {"RemoveRegistry", {{"RemoveRegistry", "Root", "Key", "Name", "Component_"}, {}}},
      {"Registry", {{"Registry", "Root", "Key", "Name", "Value", "Component_"}, {}}}};
  std::map<std::string, InstallState> features, components;
  std::vector<int> installLevels;  // each that was set
  std::map<std::string, std::string> sourcePaths;
  std::map<std::string, std::string> targetPaths;  // of directories, once costing has placed them
  std::optional<std::uint64_t> created;            // the package's summary information: FILETIME
  std::string packageCode;
  NameMap<INSTALLSTATE> productStates;                      // by product code
  NameMap<std::vector<std::string>> relatedProducts;        // product codes by upgrade code
  NameMap<std::map<std::string, std::string>> productInfo;  // attributes by product code

  /// The ANSI code page, in which all texts are: 1252; or 932, 936, 949 or 950, in which a character may have two
  /// bytes.
  static inline unsigned codePage = 1252;

  // Files, by full Windows paths with backslashes. The paths that the functions take may be longer than Windows allows.
  NameSet held;  // open in another process, shared with nobody
  std::vector<std::string> rebootDeletes;
  NameSet mappedDrives;                                              // roots with their backslashes
  NameMap<std::string> volumeLabels;                                 // by root, with its backslash
  Node &WriteFile(const std::string &path, std::string_view bytes);  // makes missing folders
  Node &MakeFolder(const std::string &path);
  void MakeJunction(const std::string &path, const std::string &target);
  void Remove(const std::string &path);                       // with all below
  bool Move(const std::string &from, const std::string &to);  // false: there is none, or an open handle forbids it
  bool Exists(const std::string &path) { return Find(path).node != nullptr; }
  DWORD &Attributes(const std::string &path) { return Find(path).node->attributes; }
  std::optional<std::string> ReadFile(const std::string &path);

  // Time, modules, environment, windows.
  std::uint64_t clockMs = 1709634315000;  // since 1970; Tuesday 5 March 2024, 10:25:15
  std::uint64_t slept = 0;                // milliseconds, all Sleep calls together
  std::set<std::string> mutexes;          // of other processes
  NameMap<Module> modules;                // by path, as it is loaded
  Module ownModule;                       // the library itself
  NameMap<std::string> environment;
  std::vector<Box> boxes;
  NameMap<Window> windows;  // by class
  bool highContrast = false;
  DWORD textColour = 0;

  // The registry: by "hklm\path", "hkcu\path" or "hkcr\path", then by value name.
  NameMap<NameMap<RegistryValue>> registry;

  NameMap<Program> programs;  // by the file as it is launched; any other is not found
  std::vector<Launch> launched;
  NameMap<Service> services;
  std::map<DWORD, std::string> processes;   // image paths by identifier; one that is terminated lets go of its image
  void MakePsapi(const std::string &path);  // a process-status library

  // Handles: how many are open of a kind, or of all; "module" counts loads.
  int OpenHandles(std::string_view kind = "") const;
  std::vector<std::string> badCloses;  // closing calls for what was not open, or not any more

  // What the library has asked for. A call on a handle shows the access that the handle was opened with.
  std::set<Asked> asked;
  void See(const std::string &subject, std::initializer_list<DWORD> values) {
    asked.insert({call, seen = subject, values});
  }
  std::string seen;  // on what the last call was; empty when that shows nothing

  // Counting and failing the calls that can fail. Both counts begin with 1; `nth` is among the calls of that name (0:
  // each) or, without a name, among all.
  int calls = 0;
  std::map<std::string, int> callCount;
  struct {
    std::string name;
    int nth = 0;
    DWORD code = 1627;
  } failCall;
  std::string failedCall;                        // the last call that was made to fail
  std::function<void(std::string_view)> onCall;  // runs before each counted call

  // For the stand-in's own files.
  std::string call;  // the last counted one
  DWORD lastError = 0;
  std::shared_ptr<Node> root;  // its entries are drives and shares
  std::map<std::uintptr_t, OpenObject> objects;
  DWORD Count(const char *name);
  bool Deferred() const { return modes.count(16) || modes.count(17) || modes.count(18); }
  Place Find(const std::string &path);
  std::uintptr_t Open(OpenObject object);
  OpenObject &Object(std::uintptr_t handle, const char *kind);
  DWORD Close(std::uintptr_t handle, std::initializer_list<std::string_view> kinds,
              const char *name = __builtin_FUNCTION());
};

World &TheWorld();

/// Puts a fresh world, or a copy of one in which no handle is open, in the place of the old one.
World &ResetWorld();
World &ResetWorld(const World &from);
