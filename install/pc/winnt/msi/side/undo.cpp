#include "side/undo.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "base/code_page.h"
#include "base/folder_rule.h"
#include "base/path.h"
#include "base/text.h"
#include "platform/c_file.h"
#include "platform/owner.h"
#include "previous/data/own_folder.h"
#include "runtime/log.h"
#include "services/files/attributes.h"
#include "services/files/create.h"
#include "services/files/delete_entry.h"
#include "services/files/error_text.h"
#include "services/files/existence.h"
#include "services/files/search.h"
#include "side/readable_file.h"

namespace zqv {

namespace {

constexpr char kList[] = "list.txt";

// What a line of the list begins with; the path below the program folder ends it.
constexpr char kNewFile[] = "+";
constexpr char kNewFolder[] = "*";
constexpr char kDeletedFolder[] = "-";
constexpr char kKeptFile = '=';  ///< then the number of the copy, the file's attributes, and a blank behind each

std::string CopyName(int number) { return Format("\\%04d.sav", number); }

/// A copy that no cancelling stops: it is that which leads to a rollback.
bool CopyBack(const std::string &copy, const std::string &path, DWORD attributes) {
  RemoveReadOnly(path, false);
  BOOL never = FALSE;
  if (CopyFileExA(copy.c_str(), path.c_str(), nullptr, nullptr, &never, 0) == FALSE) {
    Log("***Error %s copying '%s'", ErrorText(static_cast<LONG>(GetLastError())).c_str(), copy.c_str());
    return false;
  }
  if (SetFileAttributesA(path.c_str(), attributes) == FALSE) {
    Log("***Error %s setting attributes '%s'", ErrorText(static_cast<LONG>(GetLastError())).c_str(), path.c_str());
    return false;
  }
  Log("Put back '%s'", path.c_str());
  return true;
}

/// Takes what is before the next blank.
std::string_view TakeWord(std::string_view &text) {
  const std::size_t end = std::min(text.find(' '), text.size());
  const std::string_view word = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return word;
}

}  // namespace

Undo::Undo(const char *name, std::string home)
    : name_(std::string(kSavedFolder) + "\\" + name), home_(std::move(home)) {}

bool Undo::Clear() const {
  std::string folder;
  return ClearOwnFolder(name_.c_str(), folder);
}

bool Undo::Enter() {
  std::string top;
  std::string folder;
  if (folder_.empty() && FindOwnFolder(kSavedFolder, top) && FindOwnFolder(name_.c_str(), folder) &&
      EnterOwnFolder(top, heldTop_) && EnterOwnFolder(folder, held_)) {
    folder_ = folder;
  }
  return !folder_.empty();
}

/// What is beyond the program folder, or behind a link in it, is another's.
bool Undo::PathOf(std::string_view below, std::string &path) const {
  path = home_ + "\\" + std::string(below);
  bool good = IsPathBelow(below);
  for (std::size_t end = NextBackslash(below); good && end != std::string_view::npos;
       end = NextBackslash(below, end + 1)) {
    good = !IsFolderLink(home_ + "\\" + std::string(below.substr(0, end)));
  }
  if (!good) {
    Log("***'%s' is no path below '%s'", std::string(below).c_str(), home_.c_str());
  }
  return good;
}

ResultCode Undo::Note(const std::string &entry, const std::string &path) {
  const std::string begin = home_ + "\\";
  std::string known;
  if (!StartsWithName(path, begin) || !PathOf(std::string_view(path).substr(begin.size()), known) || !Enter()) {
    return ERROR_INSTALL_FAILURE;
  }
  const std::string list = folder_ + "\\" + kList;
  OwnedStream file(OpenCFile(list.c_str(), "a+"));
  const std::string line = entry + path.substr(begin.size()) + "\n";
  const bool written = file && std::fputs(line.c_str(), file.Get()) >= 0;
  if (!file || file.Close() != 0 || !written) {
    Log("***Can't write '%s'", list.c_str());
    return ERROR_INSTALL_FAILURE;
  }
  return ERROR_SUCCESS;
}

ResultCode Undo::KeepFile(const std::string &path) {
  DWORD attributes = 0;
  if (!Enter() || !AskAttributes(path, attributes)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (attributes == INVALID_FILE_ATTRIBUTES) {
    return Note(kNewFile, path);
  }
  const int number = ++copies_;
  const ResultCode copied = iwiCopyFile(true, path, folder_ + CopyName(number), "");
  return copied != ERROR_SUCCESS ? copied
                                 : Note(Format("%c%d %u ", kKeptFile, number, static_cast<unsigned>(attributes)), path);
}

ResultCode Undo::KeepFolder(const std::string &path) {
  for (std::size_t end = NextBackslash(path, home_.size() + 1);; end = NextBackslash(path, end + 1)) {
    const std::string folder = path.substr(0, end);
    DWORD attributes = 0;
    if (!AskAttributes(folder, attributes)) {
      return ERROR_INSTALL_FAILURE;
    }
    if (attributes == INVALID_FILE_ATTRIBUTES) {
      if (const ResultCode noted = Note(kNewFolder, folder); noted != ERROR_SUCCESS) {
        return noted;
      }
    }
    if (end == std::string::npos) {
      return ERROR_SUCCESS;
    }
  }
}

ResultCode Undo::DeleteKept(const std::string &path) {
  const ResultCode kept = KeepFile(path);
  if (kept != ERROR_SUCCESS) {
    return kept;
  }
  RemoveReadOnly(path, false);
  if (DeleteFileA(path.c_str()) == FALSE) {
    Log("***Error %s deleting '%s'", ErrorText(static_cast<LONG>(GetLastError())).c_str(), path.c_str());
  } else {
    Log("Deleted file: '%s'", path.c_str());
  }
  return ERROR_SUCCESS;
}

ResultCode Undo::RemoveEmptyFolder(const std::string &path) {
  DWORD attributes = 0;
  if (!AskAttributes(path, attributes)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (attributes == INVALID_FILE_ATTRIBUTES || IsFolderLink(path) || !iwiIsFolderEmpty(path)) {
    return ERROR_SUCCESS;
  }
  const ResultCode noted = Note(kDeletedFolder, path);
  if (noted == ERROR_SUCCESS) {
    static_cast<void>(iwiRemoveFolderNow(path));
  }
  return noted;
}

bool Undo::PutBackOne(const std::string &folder, const std::string &line) const {
  const std::string kind = line.substr(0, 1);
  std::string_view rest = std::string_view(line).substr(kind.size());
  int number = 0;
  DWORD attributes = 0;
  if (line.starts_with(kKeptFile)) {
    number = DecimalValue(TakeWord(rest));
    attributes = static_cast<DWORD>(DecimalValue(TakeWord(rest)));
  }
  std::string path;
  if (!PathOf(rest, path)) {
    return false;
  }
  if (number > 0) {
    return CopyBack(folder + CopyName(number), path, attributes);
  }
  if (kind == kNewFile) {
    return DeleteOneFile({.execute = true, .path = path, .report = true});
  }
  if (kind == kNewFolder) {
    return iwiRemoveFolderNow(path);
  }
  if (kind == kDeletedFolder) {
    iwiCreateFolderTree(path + "\\");
    return iwiFolderExists(path);
  }
  Log("***'%s' cannot be put back", path.c_str());
  return false;
}

bool Undo::PutBack() const {
  std::string top;
  std::string folder;
  std::vector<std::string> lines;
  if (!FindOwnFolder(kSavedFolder, top) || !FindOwnFolder(name_.c_str(), folder)) {
    return false;
  }
  bool good = ReadLines(folder + "\\" + kList, lines);
  if (lines.empty()) {
    LogLine("Nothing to put back");
  } else {
    HeldFolder heldTop;
    HeldFolder held;
    if (!HoldOwnFolder(top, heldTop) || !HoldOwnFolder(folder, held)) {
      return false;
    }
    std::reverse(lines.begin(), lines.end());
    for (const std::string &line : lines) {
      good = PutBackOne(folder, line) && good;
    }
  }
  return good && Clear();
}

}  // namespace zqv
