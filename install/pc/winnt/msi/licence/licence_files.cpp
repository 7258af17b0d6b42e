#include "licence/licence_files.h"

#include <string>

#include "features/answers/licence.h"
#include "licence/licence_folder.h"
#include "runtime/log.h"
#include "runtime/progress.h"
#include "services/files/held_folder.h"
#include "services/files/search.h"
#include "side/copied_files.h"
#include "side/source.h"
#include "side/undoable_action.h"

namespace zqv {

namespace {

constexpr char kSignatures[] = "*.sig";
constexpr int kInSignatures = 12;  // of the search, in its line

/// What an action copies, and where to.
struct Files {
  const char *undoName;
  const char *pattern;
  bool recurse;
  const char *below;   ///< the program folder
  bool mayBeUnwanted;  ///< with some kinds of licence they are deleted instead
};
constexpr Files kLicences{"licenses", "*", true, "", false};
constexpr Files kSignatureFiles{"sig", kSignatures, false, "\\sig", true};

/// Where the licences are below a source with a backslash at its end.
bool FindLicences(const std::string &source, std::string &licences) {
  std::string folder;
  const bool asked = AskLicenceFolder(folder);
  licences = source + folder;
  return asked;
}

bool AskUnwanted(const Files &files, bool &unwanted) {
  std::string type;
  if (files.mayBeUnwanted && !AskLicenceType(type)) {
    return false;
  }
  unwanted = files.mayBeUnwanted && type != "production";
  return true;
}

/// Deletes what the pattern matches in `target`; one that cannot be deleted is logged, and stays.
ResultCode DeleteFiles(const Files &files, const std::string &target, Undo &undo) {
  const HeldFolder held(target);
  if (held.IsLink()) {
    Log("***Can't use folder '%s' %d", target.c_str(), static_cast<int>(held.Error()));
    return ERROR_INSTALL_FAILURE;
  }
  Search search(target + "\\" + files.pattern);
  while (search.Next()) {
    if (!search.IsFile()) {
      continue;
    }
    const ResultCode deleted = undo.DeleteKept(target + "\\" + search.Name());
    if (deleted != ERROR_SUCCESS) {
      return deleted;
    }
    SendProgress(0, kTicksPerUnit);
  }
  return ResultOf(!search.Failed(kInSignatures));
}

ResultCode Plan(const Files &files, const std::string &target) {
  std::string source;
  std::string licences;
  bool unwanted = false;
  if (!AskUnwanted(files, unwanted)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (unwanted) {
    PlanFiles(target + "\\" + files.pattern, false);
    return ERROR_SUCCESS;
  }
  if (!HandOverSource(source) || !FindLicences(source, licences)) {
    return ERROR_INSTALL_FAILURE;
  }
  PlanFiles(licences + "\\" + files.pattern, files.recurse);
  return ERROR_SUCCESS;
}

ResultCode Execute(const Files &files, const std::string &target, Undo &undo) {
  std::string source;
  std::string licences;
  bool unwanted = false;
  if (!AskUnwanted(files, unwanted)) {
    return ERROR_INSTALL_FAILURE;
  }
  if (unwanted) {
    return DeleteFiles(files, target, undo);
  }
  if (!FindHandedSource(source) || !FindLicences(source, licences)) {
    return ERROR_INSTALL_FAILURE;
  }
  return CopyWithList(licences, files.pattern, files.recurse, target, undo);
}

ResultCode CarryOut(const Files &files) {
  const std::string target = std::string(kLicenceFolder) + files.below;
  return RunUndoable(
      {.undoName = files.undoName,
       .stackRemoval = [&](const std::string &home) { return StackListed(home, home + target); },
       .plan = [&](const std::string &home) { return Plan(files, home + target); },
       .execute = [&](const std::string &home, Undo &undo) { return Execute(files, home + target, undo); }});
}

}  // namespace

ResultCode CopyLicences() { return CarryOut(kLicences); }

ResultCode InstallSignatures() { return CarryOut(kSignatureFiles); }

}  // namespace zqv
