#include "services/files/delete.h"

#include <new>

#include "base/pair_list.h"
#include "base/path.h"
#include "runtime/log.h"
#include "services/files/search.h"

namespace zqv {

namespace {

/// What a walk does in each folder.
struct Walk {
  DeletionRequest request;  ///< of each file and folder; its path is filled in
  bool deleteFiles;
  bool removeFolders;
  bool recurse;
};

DeletionRequest RequestFor(const Walk &walk, const std::string &path) {
  DeletionRequest request = walk.request;
  request.path = path;
  return request;
}

/// Puts a path at the front of the list; false, with a line, when there is no memory for it.
bool PutInFront(iwiPAIRLIST &list, const std::string &folder, const char *name, const std::string &tail) {
  std::string path;
  try {
    path = folder + "\\" + name + tail;
  } catch (const std::bad_alloc &) {
    Log("***Can't allocate memory for FilePath");
    return false;
  }
  try {
    list.push_front({std::move(path), {}});
  } catch (const std::bad_alloc &) {
    Log("***Can't allocate memory for iwiPAIRLIST");
    return false;
  }
  return true;
}

/// Deletes the files of a folder that the path matches. `denied` becomes true when the folder cannot be searched.
bool DeleteFiles(const Walk &walk, const std::string &path, const std::string &folder, bool &denied) {
  bool result = true;
  iwiPAIRLIST files;
  {
    Search search(path);
    while (search.Next()) {
      if (search.IsFile() && !PutInFront(files, folder, search.Name(), "")) {
        result = false;
      }
    }
    denied = search.Error() == ERROR_ACCESS_DENIED;
    if (!denied && search.Failed(6)) {
      result = false;
    }
  }
  for (const iwiPAIR &file : files) {
    result = DeleteOneFile(RequestFor(walk, file.first)) && result;
  }
  return result;
}

bool ListSubfolders(const std::string &folder, const std::string &tail, iwiPAIRLIST &subfolders) {
  bool result = true;
  Search search(folder + "\\*");
  while (search.Next()) {
    if (search.IsSubfolder() && !PutInFront(subfolders, folder, search.Name(), tail)) {
      result = false;
    }
  }
  return !search.Failed(7) && result;
}

/// The system's limit on the length of a path bounds the depth of this recursion. `named` says that the caller of the
/// library's operation has named this folder, and no search has found it.
bool DeleteTree(const Walk &walk, std::string path, bool named) {
  iwiTidyPath(kWithoutBackslash, path);
  const SplitPath split = SplitAtLastBackslash(path);
  const bool cut = walk.deleteFiles && split.hasBackslash;
  const std::string folder(cut ? split.folder : path);
  const std::string pattern(cut ? split.name : "");
  if (cut != walk.deleteFiles || folder.empty()) {
    Log("***Invalid file pattern; path '%s', pattern '%s', dirs %d, FilePaths %d", folder.c_str(), pattern.c_str(),
        static_cast<int>(walk.removeFolders), static_cast<int>(walk.deleteFiles));
    return false;
  }
  bool result = true;
  if ((named && !walk.removeFolders) || !IsFolderLink(folder)) {
    bool denied = false;
    if (walk.deleteFiles) {
      result = DeleteFiles(walk, path, folder, denied);
    }
    if (walk.recurse && !denied) {
      iwiPAIRLIST subfolders;
      result = ListSubfolders(folder, walk.deleteFiles ? "\\" + pattern : "", subfolders) && result;
      for (const iwiPAIR &subfolder : subfolders) {
        result = DeleteTree(walk, subfolder.first, false) && result;
      }
    }
  }
  if (walk.removeFolders) {
    result = iwiDeleteFolder(RequestFor(walk, folder)) && result;
  }
  return result;
}

}  // namespace

bool iwiDeleteFile(const DeletionRequest &request) {
  if (SplitAtLastBackslash(request.path).name.find('*') == std::string_view::npos) {
    return DeleteOneFile(request);
  }
  return iwiDeletePattern(request.countOnly, request.execute, request.ticks, request.path, true, false, false,
                          request.component, request.installMode);
}

bool iwiDeletePattern(bool countOnly, bool execute, int *ticks, const std::string &path, bool deleteFiles,
                      bool removeFolders, bool recurse, const std::string &component, int installMode) {
  const Walk walk{.request = {.countOnly = countOnly,
                              .execute = execute,
                              .ticks = ticks,
                              .component = component,
                              .installMode = installMode},
                  .deleteFiles = deleteFiles,
                  .removeFolders = removeFolders,
                  .recurse = recurse};
  return DeleteTree(walk, path, true);
}

}  // namespace zqv
