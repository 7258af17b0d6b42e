#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

#include "platform/owner.h"
#include "platform/win32.h"
#include "runtime/log.h"
#include "runtime/session.h"
#include "services/files/copy.h"
#include "services/files/create.h"
#include "services/files/delete.h"
#include "shared.h"
#include "zqviwicn/load.h"

/// The part of the figures that only a Windows system can give.
///
///     windows_bench.exe FILES...
///
/// FILES are the sizes of the trees that are copied and deleted. The libraries and the reference package lie in the
/// current folder. Prints a line for each run of the library and of its floor: the name of the row, which is the
/// operation, a colon and the floor; the microseconds of both; tabs between them.
namespace {

using namespace zqv;

const std::string kText = "Property 'ZQVPRODUCT' value 'server' from property table";
const std::string kLine = "12:00:00 QVCA info iwiUserExit: " + kText;

/// The folder that everything lies in, and the logs in it.
std::string base, traceLog, userLog, tempLog;

using Work = std::function<void()>;

/// Microseconds that each of `count` runs takes.
double Time(int count, const Work &work) {
  LARGE_INTEGER frequency, begin, end;
  QueryPerformanceFrequency(&frequency);
  QueryPerformanceCounter(&begin);
  for (int run = 0; run < count; ++run) {
    work();
  }
  QueryPerformanceCounter(&end);
  return static_cast<double>(end.QuadPart - begin.QuadPart) * 1e6 / static_cast<double>(frequency.QuadPart) / count;
}

void Print(const std::string &name, double library, double floor) {
  std::printf("%s\t%.3f\t%.3f\n", name.c_str(), library, floor);
}

/// Runs the library and the floor in turn.
void Compare(const std::string &name, int rounds, int count, const Work &library, const Work &floor) {
  for (int round = 0; round < rounds; ++round) {
    const double own = Time(count, library);
    Print(name, own, Time(count, floor));
  }
}

/// Opens the file, appends the line and closes it.
void BareAppend(const std::string &path, const std::string &line) {
  if (std::FILE *file = std::fopen(path.c_str(), "a+")) {
    std::fprintf(file, "%s\n", line.c_str());
    std::fclose(file);
  }
}

/// Writes lines to the installer's log, the trace log and the user log.
void BareLines(int count, const std::string &line) {
  for (int written = 0; written < count; ++written) {
    BareMessage(Session().handle, line);
    BareAppend(traceLog, line);
    BareAppend(userLog, line);
  }
}

void DeleteLogs() {
  for (const std::string &log : {traceLog, userLog, tempLog}) {
    DeleteFileA(log.c_str());
  }
}

/// How many lines the trace log has.
int CountLines() {
  int lines = 0;
  const OwnedStream file(std::fopen(traceLog.c_str(), "r"));
  for (int character; file && (character = std::fgetc(file.Get())) != EOF;) {
    lines += character == '\n' ? 1 : 0;
  }
  return lines;
}

/// Loads, finds and unloads, and with a session calls the action in between.
void Use(const char *library, const char *action, MSIHANDLE session) {
  const HMODULE module = LoadLibraryA(library);
  const FARPROC entry = module == nullptr ? nullptr : GetProcAddress(module, action);
  Expect(entry != nullptr, library);
  if (session != 0) {
    reinterpret_cast<UINT(__stdcall *)(MSIHANDLE)>(reinterpret_cast<void *>(entry))(session);
  }
  FreeLibrary(module);
}

/// The system's libraries are loaded already, as in an installer engine.
void BenchLoads() {
  LoadLibraryA("shell32.dll");
  const auto useLibrary = [](MSIHANDLE session) { Use("zqviwicn.dll", "iwiUserExit", session); };
  const auto useEmpty = [](MSIHANDLE session) { Use("empty_action.dll", "empty@4", session); };
  Compare(
      "load, unload: an empty DLL in C", 41, 10, [&] { useLibrary(0); }, [&] { useEmpty(0); });

  const MSIHANDLE session = Session().handle;
  DeleteLogs();
  useLibrary(session);
  const int lines = CountLines();
  const auto floor = [&] {
    useEmpty(session);
    BareLines(lines, kLine);
  };
  Compare(
      "first action: an empty DLL in C, same lines", 41, 10, [&] { useLibrary(session); }, floor);
}

void BenchLines() {
  MsiSetPropertyA(Session().handle, "ZQVTEMPLOGPATH", tempLog.c_str());
  const auto floor = [] {
    BareLines(1, kLine);
    BareAppend(tempLog, kLine);
  };
  Compare(
      "log line, three files: open, append, close, same message", 15, 200, [] { LogLine(kText); }, floor);
  RetireTempLog();
}

void BenchRows() {
  int next = 0;
  const auto key = [&] { return "ZQV_Record_" + std::to_string(next++); };
  const auto add = [&] { Insert(key()); };
  DeleteLogs();
  add();
  const int lines = CountLines();
  const auto floor = [&] {
    BareInsert(Session().handle, key());
    BareLines(lines, kLine);
  };
  Compare("rows, 10000: bare inserts, same lines", 40, 250, add, floor);
}

/// Makes a tree that has 100 files a folder and ten folders a folder.
void MakeTree(const std::string &root, int files) {
  for (int file = 0; file < files; ++file) {
    const std::string folder = root + "\\" + std::to_string(file / 1000) + "\\" + std::to_string(file / 100) + "\\";
    if (file % 100 == 0) {
      iwiCreateFolderTree(folder);
    }
    BareAppend(folder + std::to_string(file) + ".txt", "A file of a few bytes.");
  }
}

/// Copies a tree or, with no target, deletes it.
void BareLoop(const std::string &tree, const std::string &target) {
  const bool copying = !target.empty();
  if (copying) {
    CreateDirectoryA(target.c_str(), nullptr);
  }
  WIN32_FIND_DATAA entry;
  OwnedSearch search(FindFirstFileA((tree + "\\*").c_str(), &entry));
  do {
    const std::string name = entry.cFileName;
    const std::string from = tree + "\\" + name;
    const std::string to = copying ? target + "\\" + name : "";
    if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
      if (copying) {
        CopyFileExA(from.c_str(), to.c_str(), nullptr, nullptr, nullptr, 0);
      } else {
        DeleteFileA(from.c_str());
      }
      BareLines(1, kLine);
    } else if (name != "." && name != "..") {
      BareLoop(from, to);
    }
  } while (FindNextFileA(search.Get(), &entry) != FALSE);
  if (!copying) {
    search.Reset();
    RemoveDirectoryA(tree.c_str());
  }
}

/// Each copies the tree and deletes the copy, so that the next one finds what the first one found.
void BenchFiles(int files) {
  const std::string source = base + "\\source";
  const std::string copy = base + "\\copy";
  const std::string of = ", " + std::to_string(files) + " files: a bare loop, same lines";
  MakeTree(source, files);
  const auto copyTree = [&] { Expect(iwiCopyPattern(source, copy, "*", true) == ERROR_SUCCESS, "copying a tree"); };
  DeletionRequest request{.execute = true, .deleteFiles = true, .removeFolders = true, .recurse = true};
  const auto deleteTree = [&](const std::string &folder) {
    request.path = folder + "\\*";
    Expect(iwiDeletePattern(request), "deleting a tree");
  };
  for (int round = 0; round < std::clamp(30000 / files, 1, 9); ++round) {
    DeleteLogs();
    const double copying = Time(1, copyTree);
    const int copyLines = CountLines();
    const double deleting = Time(1, [&] { deleteTree(copy); });
    const int deleteLines = CountLines() - copyLines;
    DeleteLogs();
    const auto bareCopy = [&] {
      BareLoop(source, copy);
      BareLines(copyLines - files, kLine);
    };
    const auto bareDelete = [&] {
      BareLoop(copy, "");
      BareLines(deleteLines - files, kLine);
    };
    Print("copy" + of, copying / files, Time(1, bareCopy) / files);
    Print("delete" + of, deleting / files, Time(1, bareDelete) / files);
  }
  deleteTree(source);
}

}  // namespace

int main(int argc, char **argv) {
  char temp[MAX_PATH];
  GetTempPathA(MAX_PATH, temp);
  base = temp + std::string("windows_bench") + std::to_string(GetCurrentProcessId());
  traceLog = base + "\\trace.log";
  userLog = base + "\\user.log";
  tempLog = base + "\\temp.log";
  CreateDirectoryA(base.c_str(), nullptr);
  MsiSetInternalUI(INSTALLUILEVEL_NONE, nullptr);
  Load();
  MSIHANDLE &session = Session().handle;
  const UINT opened = MsiOpenPackageExA("vantrelqv.msi", MSIOPENPACKAGEFLAGS_IGNOREMACHINESTATE, &session);
  Expect(opened == ERROR_SUCCESS, "opening vantrelqv.msi");
  MsiSetPropertyA(session, "ZQVUSERTRACEPATH", traceLog.c_str());
  MsiSetPropertyA(session, "ZQVUSERLOGPATH", userLog.c_str());
  MsiSetPropertyA(session, "ZQVTEMP", base.c_str());
  BenchLoads();
  BenchLines();
  BenchRows();
  std::for_each(argv + 1, argv + argc, [](const char *files) { BenchFiles(std::max(1, std::atoi(files))); });
  MsiCloseHandle(session);
  Unload();
  DeleteLogs();
  RemoveDirectoryA(base.c_str());
  return 0;
}
