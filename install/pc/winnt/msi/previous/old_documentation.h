#pragma once

#include <vector>

#include "base/result_code.h"

namespace zqv {

/// The languages of the documentation that an earlier version may have brought beside its own.
enum class OldDocumentation { deDe, enUs, esEs, frFr, itIt, jaJp, koKr, ptBr, zhCn, zhTw };

/// Decides whether an earlier version's documentation in the language is removed, which a property tells from then on,
/// and stacks the removal of its registry values and of what its uninstall lists name. Where the new documentation
/// feature takes its place, only the lists of the PDF and HTML documentation are carried out. Returns ERROR_SUCCESS, or
/// ERROR_INSTALL_FAILURE when the property cannot be set.
ResultCode DeleteOldDocumentation(OldDocumentation language);

/// The properties that tell the decisions, one a language.
std::vector<const char *> DocumentationDecisions();

/// The same as the body of an action.
template <OldDocumentation Language>
ResultCode DeleteOld() {
  return DeleteOldDocumentation(Language);
}

}  // namespace zqv
