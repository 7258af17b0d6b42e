#include <algorithm>
#include <string>

#include "bare.h"
#include "measure.h"
#include "platform/owner.h"
#include "platform/win32.h"
#include "services/files/copy.h"
#include "services/files/create.h"
#include "services/files/delete.h"

/// What copying and deleting a tree costs a file. A tree has 100 files a folder and ten folders a folder.
namespace {

using namespace zqv;

constexpr int kFilesInFolder = 100;
constexpr int kFoldersInFolder = 10;

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

void WriteLine(MSIHANDLE session, const std::string &path) {
  BareLine(session, "12:00:00 QVCA info (CaProlog): Deleted file: '" + path + "'");
}

/// Bare loops over a tree, which log a line for each file. Those with `asking` also ask all that copying has to ask.
struct BareLoop {
  MSIHANDLE session;
  bool asking;

  void CopyOneFile(const std::string &from, const std::string &to) const {
    if (asking) {
      GetFileAttributesA((base + "\\" + kCancelMarker).c_str());
      GetFileAttributesA(to.c_str());
    }
    CopyFileExA(from.c_str(), to.c_str(), nullptr, nullptr, nullptr, 0);
    if (asking) {
      GetFileAttributesA(to.c_str());
    }
    WriteLine(session, from);
  }

  void Copy(const std::string &from, const std::string &to) const {
    CreateDirectoryA(to.c_str(), nullptr);
    Walk(from, [&](const std::string &name, bool isFolder) {
      if (isFolder) {
        Copy(from + "\\" + name, to + "\\" + name);
      } else {
        CopyOneFile(from + "\\" + name, to + "\\" + name);
      }
    });
  }

  void Delete(const std::string &folder) const {
    Walk(folder, [&](const std::string &name, bool isFolder) {
      const std::string path = folder + "\\" + name;
      if (isFolder) {
        Delete(path);
      } else {
        DeleteFileA(path.c_str());
        WriteLine(session, path);
      }
    });
    RemoveDirectoryA(folder.c_str());
  }
};

}  // namespace

void BenchFiles(int files) {
  const std::string source = base + "\\source";
  const std::string copy = base + "\\copy";
  const InstallerSession session;
  MakeTree(source, files);
  const auto libraryDeletes = [](const std::string &folder) {
    return iwiDeletePattern(
        {.execute = true, .path = folder + "\\*", .deleteFiles = true, .removeFolders = true, .recurse = true});
  };
  // Each copies the tree and deletes the copy, so that the next one finds what the first one found.
  Times libraryCopying, libraryDeleting, bareCopying, bareDeleting, askingCopying, askingDeleting;
  const auto run = [](Times &times, const std::function<void()> &work) { times.push_back(Time(work)); };
  for (int round = 0; round < std::clamp(30000 / files, 1, 9); ++round) {
    DeleteLogs();
    bool copied = false;
    bool deleted = false;
    run(libraryCopying, [&] { copied = iwiCopyPattern(source, copy, "*", true) == ERROR_SUCCESS; });
    run(libraryDeleting, [&] { deleted = libraryDeletes(copy); });
    const int lines = CountLines();
    if (!copied || !deleted || lines < 2 * files) {
      Fail("the tree cannot be copied and deleted");
    }
    const auto byLoop = [&](bool asking, Times &copying, Times &deleting) {
      DeleteLogs();
      const BareLoop loop{session.Get(), asking};
      const auto logFolders = [&] {  // the lines that are no file's, half of them in each of the two
        for (int line = 2 * files; line < lines; line += 2) {
          WriteLine(session.Get(), base);
        }
      };
      run(copying, [&] { loop.Copy(source, copy), logFolders(); });
      run(deleting, [&] { loop.Delete(copy), logFolders(); });
    };
    byLoop(false, bareCopying, bareDeleting);
    byLoop(true, askingCopying, askingDeleting);
  }
  const std::string of = std::to_string(files) + " files: a bare loop, same lines";
  Print("copy " + of, files, libraryCopying, bareCopying);
  Print("copy " + of + " and questions", files, libraryCopying, askingCopying);
  Print("delete " + of, files, libraryDeleting, bareDeleting);
  libraryDeletes(source);
}
