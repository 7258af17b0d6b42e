#pragma once

#include <string>
#include <vector>

namespace zqv {

/// Judges the folders below which an action is about to delete something, whether at once or by rows that the installer
/// carries out. They come from properties, the registry and lists, and may name anything. One guard serves one action.
class DeletionGuard {
 public:
  /// How a folder of the library's own is judged, which may be the system's temporary folder.
  enum class Temporary { barred, allowed };

  /// Reads which folders are the system's and the user's, if that has not been done yet. False when that fails; from
  /// then on every folder is refused.
  [[nodiscard]] bool Prepare();

  /// Bars one more folder, and all that are above it. An empty text bars none.
  void Bar(const std::string &folder);

  /// True when what is below `folder` may be deleted: the folder is valid by the rule of base/folder_rule.h, not the
  /// root of a drive or share, and neither one of the barred folders nor above one. Otherwise the folder is told, the
  /// first time that it is asked for.
  [[nodiscard]] bool MayDeleteBelow(const std::string &folder, Temporary temporary = Temporary::barred);

 private:
  enum class Reading { notYet, failed, done };
  bool ReadBarred();

  Reading reading_ = Reading::notYet;
  std::vector<std::string> barred_;
  std::string temporary_;
  std::vector<std::string> told_;
};

}  // namespace zqv
