#pragma once

#include <span>

#include "base/result_code.h"

namespace zqv {

/// The components that an earlier version may have brought beside its documentation.
enum class OldComponent {
  server,
  localClient,
  toolkit,
  internetGateway,
  webAdministration,
  libraryChm,
  libraryPdf,
  internetJavaDocuments
};

struct OldComponentRow {
  OldComponent component;
  const char *feature;   ///< the package's, which takes its place; null: none does
  const char *decision;  ///< the property: "1" where the component goes, else empty
  const char *told;      ///< the line that says that it goes
  const char *record;    ///< the value that the earlier version has recorded it by
  const char *list;      ///< its uninstall list
};

/// All of them, in the order of the enumeration.
std::span<const OldComponentRow> OldComponents();

/// Decides whether an earlier version's component is removed, which a property tells from then on, and stacks what its
/// uninstall list names; where no feature takes its place, its record goes too. What the earlier version did not have
/// is let be. Returns ERROR_SUCCESS, or ERROR_INSTALL_FAILURE when the property cannot be set.
ResultCode DeleteOldComponent(OldComponent component);

/// The same as the body of an action.
template <OldComponent Component>
ResultCode DeleteOld() {
  return DeleteOldComponent(Component);
}

}  // namespace zqv
