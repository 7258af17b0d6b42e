#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

#include "platform/msi.h"
#include "platform/owner.h"
#include "platform/win32.h"
#include "runtime/log.h"
#include "runtime/session.h"
#include "services/copy.h"
#include "services/create.h"
#include "services/delete.h"
#include "zqviwicn/load.h"

/// What copying and deleting trees costs a file, beside a bare loop over the same tree that writes as many lines: once
/// through the library's log, once to the file alone, which it opens, appends to and closes for each line.
///
///     files_bench.exe [FILES...]
///
/// The reference package lies in the current folder. A tree is 100 files a folder and ten folders a folder.
namespace {

constexpr int kFilesInFolder = 100;
constexpr int kFoldersInFolder = 10;

std::string base;
std::string trace;

/// The bare loop's line.
enum Line { kLogged, kAppended };

void Write(Line line, const std::string &path) {
  if (line == kLogged) {
    LogLine("Deleted file: '" + path + "'");
    return;
  }
  if (std::FILE *file = std::fopen(trace.c_str(), "a+")) {
    std::fprintf(file, "12:00:00 QVCA info files_bench: Deleted file: '%s'\n", path.c_str());
    std::fclose(file);
  }
}

void MakeTree(const std::string &root, int files) {
  for (int folder = 0; folder * kFilesInFolder < files; ++folder) {
    const std::string path = root + "\\" + std::to_string(folder / kFoldersInFolder) + "\\" + std::to_string(folder);
    iwiCreateFolderTree(path + "\\");
    for (int file = folder * kFilesInFolder; file < std::min(files, (folder + 1) * kFilesInFolder); ++file) {
      if (std::FILE *stream = std::fopen((path + "\\" + std::to_string(file) + ".txt").c_str(), "w")) {
        std::fputs("A file of a few bytes.\n", stream);
        std::fclose(stream);
      }
    }
  }
}

/// Hands each entry to `visit`, folders after what is in them.
template <typename Visit>
void Walk(const std::string &folder, const Visit &visit) {
  WIN32_FIND_DATAA entry;
  const OwnedSearch search(FindFirstFileA((folder + "\\*").c_str(), &entry));
  do {
    const std::string name = entry.cFileName;
    const bool isFolder = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    if (name != "." && name != "..") {
      visit(name, isFolder);
    }
  } while (FindNextFileA(search.Get(), &entry) != FALSE);
}

void BareCopy(const std::string &from, const std::string &to, Line line) {
  CreateDirectoryA(to.c_str(), nullptr);
  Walk(from, [&](const std::string &name, bool isFolder) {
    if (isFolder) {
      BareCopy(from + "\\" + name, to + "\\" + name, line);
    } else {
      CopyFileExA((from + "\\" + name).c_str(), (to + "\\" + name).c_str(), nullptr, nullptr, nullptr, 0);
      Write(line, from + "\\" + name);
    }
  });
}

void BareDelete(const std::string &folder, Line line) {
  Walk(folder, [&](const std::string &name, bool isFolder) {
    const std::string path = folder + "\\" + name;
    if (isFolder) {
      BareDelete(path, line);
    } else {
      DeleteFileA(path.c_str());
      Write(line, path);
    }
  });
  RemoveDirectoryA(folder.c_str());
}

bool LibraryCopy(const std::string &from, const std::string &to) {
  return iwiCopyPattern(from, to, "*", true) == ERROR_SUCCESS;
}

bool LibraryDelete(const std::string &folder) {
  return iwiDeletePattern(false, true, nullptr, folder + "\\*", true, true, true, "", 0) != 0;
}

/// Microseconds that `work` takes.
template <typename Work>
double Time(const Work &work) {
  LARGE_INTEGER frequency;
  LARGE_INTEGER begin;
  LARGE_INTEGER end;
  QueryPerformanceFrequency(&frequency);
  QueryPerformanceCounter(&begin);
  work();
  QueryPerformanceCounter(&end);
  return static_cast<double>(end.QuadPart - begin.QuadPart) * 1e6 / static_cast<double>(frequency.QuadPart);
}

int CountLines() {
  int lines = 0;
  const OwnedStream file(std::fopen(trace.c_str(), "r"));
  for (int character; file && (character = std::fgetc(file.Get())) != EOF;) {
    lines += character == '\n' ? 1 : 0;
  }
  return lines;
}

/// Microseconds of the best run: whatever else the machine does only adds.
struct Figures {
  double library = std::numeric_limits<double>::max();
  double logged = library;
  double appended = library;
  int lines = 0;
};

void Print(const char *operation, int files, const Figures &figures) {
  std::printf(
      "%-6s %7d files %8.2f lines/file  library %8.1f us/file  bare, logged %8.1f (x%.2f)"
      "  bare, appended %8.1f (x%.2f)\n",
      operation, files, 1.0 * figures.lines / files, figures.library / files, figures.logged / files,
      figures.library / figures.logged, figures.appended / files, figures.library / figures.appended);
  std::fflush(stdout);
}

/// Runs the library's operation, then the bare loop with each kind of line, each run on what `prepare` makes.
template <typename Prepare, typename Library, typename Bare>
void Measure(int files, Figures &figures, const Prepare &prepare, const Library &library, const Bare &bare) {
  prepare();
  DeleteFileA(trace.c_str());
  bool good = false;
  figures.library = std::min(figures.library, Time([&] { good = library(); }));
  figures.lines = CountLines();
  if (!good || figures.lines < files) {
    std::printf("The library failed; see %s\n", trace.c_str());
    std::exit(1);
  }
  for (const Line line : {kLogged, kAppended}) {
    prepare();
    DeleteFileA(trace.c_str());
    const double time = Time([&] {
      bare(line);
      // What the library logs beyond a line a file.
      for (int more = files; more < figures.lines; ++more) {
        Write(line, base);
      }
    });
    double &best = line == kLogged ? figures.logged : figures.appended;
    best = std::min(best, time);
  }
}

void Bench(int files) {
  const std::string source = base + "\\source";
  const std::string copy = base + "\\copy";
  Figures copying;
  Figures deleting;
  MakeTree(source, files);
  for (int run = 0; run < std::clamp(20000 / files, 3, 15); ++run) {
    Measure(
        files, copying, [&] { LibraryDelete(copy); }, [&] { return LibraryCopy(source, copy); },
        [&](Line line) { BareCopy(source, copy, line); });
    Measure(
        files, deleting, [&] { BareCopy(source, copy, kAppended); }, [&] { return LibraryDelete(copy); },
        [&](Line line) { BareDelete(copy, line); });
  }
  LibraryDelete(source);
  Print("copy", files, copying);
  Print("delete", files, deleting);
}

}  // namespace

int main(int argc, char **argv) {
  char temp[MAX_PATH];
  GetTempPathA(MAX_PATH, temp);
  base = temp + std::string("files_bench");
  trace = base + "\\trace.log";
  CreateDirectoryA(base.c_str(), nullptr);
  MsiSetInternalUI(INSTALLUILEVEL_NONE, nullptr);
  MSIHANDLE session = 0;
  if (MsiOpenPackageExA("vantrelqv.msi", MSIOPENPACKAGEFLAGS_IGNOREMACHINESTATE, &session) != ERROR_SUCCESS) {
    std::puts("vantrelqv.msi cannot be opened");
    return 1;
  }
  MsiSetPropertyA(session, "ZQVUSERTRACEPATH", trace.c_str());
  MsiSetPropertyA(session, "ZQVTEMP", base.c_str());
  Load();
  Session().handle = session;
  std::vector<int> sizes{1000, 10000};
  if (argc > 1) {
    sizes.clear();
    std::transform(argv + 1, argv + argc, std::back_inserter(sizes), [](const char *text) { return std::atoi(text); });
  }
  LibraryDelete(base);
  CreateDirectoryA(base.c_str(), nullptr);
  for (const int files : sizes) {
    Bench(files);
  }
  Unload();
  MsiCloseHandle(session);
  return 0;
}
