#include "services/files/delete.h"

#include <new>

#include "base/pair_list.h"
#include "base/path.h"
#include "runtime/log.h"
#include "services/files/held_folder.h"
#include "services/files/search.h"

namespace zqv {

namespace {

/// The same request for another path.
DeletionRequest RequestFor(const DeletionRequest &walk, const std::string &path) {
  DeletionRequest request = walk;
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

/// Deletes the files of a folder that the path matches. `barred` says why the folder is not held, and `denied` becomes
/// true when it cannot be searched.
bool DeleteFiles(const DeletionRequest &walk, const std::string &path, const std::string &folder, LONG barred,
                 bool &denied) {
  bool result = true;
  iwiPAIRLIST files;
  {
    Search search(path, barred);
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

bool ListSubfolders(const std::string &folder, LONG barred, const std::string &tail, iwiPAIRLIST &subfolders) {
  bool result = true;
  Search search(folder + "\\*", barred);
  while (search.Next()) {
    if (search.IsSubfolder() && !PutInFront(subfolders, folder, search.Name(), tail)) {
      result = false;
    }
  }
  return !search.Failed(7) && result;
}

/// The system's limit on the length of a path bounds the depth of this recursion. `named` says that the caller of the
/// library's operation has named this folder, and no search has found it.
bool DeleteTree(const DeletionRequest &walk, bool named) {
  std::string path = walk.path;
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
  HeldFolder held(folder);
  if ((named && !walk.removeFolders) || !held.IsLink()) {
    bool denied = false;
    if (walk.deleteFiles) {
      result = DeleteFiles(walk, path, folder, held.Error(), denied);
    }
    if (walk.recurse && !denied) {
      iwiPAIRLIST subfolders;
      result = ListSubfolders(folder, held.Error(), walk.deleteFiles ? "\\" + pattern : "", subfolders) && result;
      for (const iwiPAIR &subfolder : subfolders) {
        result = DeleteTree(RequestFor(walk, subfolder.first), false) && result;
      }
    }
  }
  held.LetGo();
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
  DeletionRequest files = request;
  files.deleteFiles = true;
  files.removeFolders = false;
  files.recurse = false;
  return iwiDeletePattern(files);
}

bool iwiDeletePattern(const DeletionRequest &request) {
  DeletionRequest walk = request;
  walk.report = false;
  walk.error = nullptr;
  return DeleteTree(walk, true);
}

}  // namespace zqv
