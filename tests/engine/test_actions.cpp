#include "runtime/frame.h"
#include "runtime/property.h"
#include "services/files/delete.h"
#include "services/tables/components.h"
#include "services/tables/products.h"
#include "services/tables/remove_file.h"
#include "services/tables/table_row.h"

/// Actions that the engine runs in installations of the test package, on what the test has put into ZQVTEMP.
namespace {

using namespace zqv;

UINT Stack() {
  std::string folder;
  std::string product;
  UINT result = ResultOf(GetTrimmedProperty("ZQVTEMP", folder));
  iwiFindRelatedProduct("{8D1C5EA1-A4C5-4967-97FA-77FE6D4B5EA7}", product);
  const std::string component = iwiFindLocalComponent("Base_base");
  for (const int mode : {1, 2, 3}) {
    result |= iwiStackFilesForDeletion(folder + "\\stacked\\" + std::to_string(mode) + ".txt", component, mode);
  }
  result |= iwiStackFolderForDeletion(folder + "\\stacked\\empty\\", component, 1);
  const FieldValue values[] = {"TestRow", 2, "Software\\ZqvEngineTest", "Doomed", component.c_str()};
  return result | iwiAddTableRow({"RemoveRegistry", values});
}

UINT Delete() {
  std::string folder;
  if (!GetTrimmedProperty("ZQVTEMP", folder)) {
    return ERROR_INSTALL_FAILURE;
  }
  const DeletionRequest tree{
      .execute = true, .path = folder + "\\tree\\*", .deleteFiles = true, .removeFolders = true, .recurse = true};
  return ResultOf(iwiDeletePattern(tree));
}

}  // namespace

extern "C" __declspec(dllexport) UINT __stdcall StackRemovals(MSIHANDLE session) {
  return RunAction({"StackRemovals", ERROR_SUCCESS, kImmediateOnly, Stack}, session);
}

extern "C" __declspec(dllexport) UINT __stdcall DeleteTree(MSIHANDLE session) {
  return RunAction({"DeleteTree", ERROR_SUCCESS, kAnyMode, Delete}, session);
}
