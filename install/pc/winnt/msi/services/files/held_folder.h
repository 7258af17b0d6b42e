#pragma once

#include <string>

#include "platform/owner.h"
#include "platform/win32.h"

namespace zqv {

/// A folder that is held open while it is walked. Nobody can rename or remove it meanwhile, and put a link in its place
/// that would lead the walk elsewhere; and whether it is a link itself is asked when it is held. A walk holds all
/// folders from the one that its caller named down to the one that it is in. What no handle forbids is that somebody
/// empties a folder and makes that very folder a link.
class HeldFolder {
 public:
  /// Holds nothing.
  HeldFolder() = default;

  /// Holds the folder if it can; of a link, the link itself. The path is one that names are appended to behind a
  /// backslash, so that "C:" is the root of the drive, and an empty one the root of the current drive.
  explicit HeldFolder(const std::string &path);

  /// Why the folder is not held; ERROR_SUCCESS when it is.
  LONG Error() const { return error_; }

  /// True when what is held leads elsewhere: a junction, a mount point or a symbolic link.
  bool IsLink() const { return isLink_; }

  /// Lets go of the folder. It cannot be removed before.
  void LetGo() { folder_.Reset(); }

 private:
  OwnedFile folder_;
  LONG error_ = ERROR_SUCCESS;
  bool isLink_ = false;
};

}  // namespace zqv
