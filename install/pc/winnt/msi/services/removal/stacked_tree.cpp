#include "services/removal/stacked_tree.h"

#include "services/files/delete.h"

namespace zqv {

void StackTree(const std::string &folder, const std::string &component, int installMode) {
  // With the count, a folder too has its row.
  static_cast<void>(iwiDeletePattern({.countOnly = true,
                                      .path = folder + "\\*",
                                      .component = component,
                                      .installMode = installMode,
                                      .deleteFiles = true,
                                      .removeFolders = true,
                                      .recurse = true}));
}

}  // namespace zqv
