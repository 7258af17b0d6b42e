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

/// What copying and deleting trees costs a file, beside bare loops over the same tree that write as many lines.
///
///     files_bench.exe [FILES...]
///
/// The reference package lies in the current folder. A tree is 100 files a folder and ten folders a folder.
namespace {

constexpr int kFilesInFolder = 100;
constexpr int kFoldersInFolder = 10;

std::string base;
std::string trace;

/// The loops that the library is compared with.
enum Loop {
  kSameCalls,  ///< asks the system all that the library has to ask for a file, and logs with the library's log
  kBare,       ///< copies or deletes and asks nothing, and logs with the library's log
  kAppended,   ///< as kBare, but each line only opens the trace, appends to it and closes it
};
constexpr Loop kLoops[] = {kSameCalls, kBare, kAppended};

void Write(Loop loop, const std::string &path) {
  if (loop != kAppended) {
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

/// Hands the name of each entry to `visit`, and whether it is a folder.
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

void BareCopyFile(const std::string &from, const std::string &to, Loop loop) {
  if (loop == kSameCalls) {
    WIN32_FIND_DATAA marker;
    const OwnedSearch cancelled(FindFirstFileA((base + "\\zqvcancl.txt").c_str(), &marker));
    GetFileAttributesA(to.c_str());
  }
  CopyFileExA(from.c_str(), to.c_str(), nullptr, nullptr, nullptr, 0);
  if (loop == kSameCalls) {
    GetFileAttributesA(to.c_str());
  }
  Write(loop, from);
}

void BareCopy(const std::string &from, const std::string &to, Loop loop) {
  CreateDirectoryA(to.c_str(), nullptr);
  Walk(from, [&](const std::string &name, bool isFolder) {
    (isFolder ? BareCopy : BareCopyFile)(from + "\\" + name, to + "\\" + name, loop);
  });
}

void BareDelete(const std::string &folder, Loop loop) {
  Walk(folder, [&](const std::string &name, bool isFolder) {
    const std::string path = folder + "\\" + name;
    if (isFolder) {
      BareDelete(path, loop);
    } else {
      DeleteFileA(path.c_str());
      Write(loop, path);
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
  double loops[std::size(kLoops)] = {library, library, library};
  int lines = 0;
};

void Print(const char *operation, int files, const Figures &figures) {
  std::printf("%-6s %6d files  %.2f lines/file  library %6.1f us/file  ", operation, files, 1.0 * figures.lines / files,
              figures.library / files);
  const char *const names[] = {"same calls", "bare", "bare, appended"};
  for (const Loop loop : kLoops) {
    std::printf("  %s %6.1f (x%.2f)", names[loop], figures.loops[loop] / files, figures.library / figures.loops[loop]);
  }
  std::printf("\n");
  std::fflush(stdout);
}

/// Runs the library's operation, then each bare loop, each on what `prepare` makes.
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
  for (const Loop loop : kLoops) {
    prepare();
    DeleteFileA(trace.c_str());
    const double time = Time([&] {
      bare(loop);
      // What the library logs beyond a line a file.
      for (int more = files; more < figures.lines; ++more) {
        Write(loop, base);
      }
    });
    figures.loops[loop] = std::min(figures.loops[loop], time);
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
        [&](Loop loop) { BareCopy(source, copy, loop); });
    Measure(
        files, deleting, [&] { BareCopy(source, copy, kAppended); }, [&] { return LibraryDelete(copy); },
        [&](Loop loop) { BareDelete(copy, loop); });
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
    std::transform(argv + 1, argv + argc, std::back_inserter(sizes),
                   [](const char *text) { return std::max(1, std::atoi(text)); });
  }
  LibraryDelete(base);
  CreateDirectoryA(base.c_str(), nullptr);
  for (const int files : sizes) {
    Bench(files);
  }
  Unload();
  MsiCloseHandle(session);
  DeleteFileA(trace.c_str());
  RemoveDirectoryA(base.c_str());
  return 0;
}
