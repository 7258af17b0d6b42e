#pragma once

#include <string>
#include <string_view>

#include "base/result_code.h"

namespace zqv {

/// iwiReconcileEclipseLinkFiles: for each documentation that is local after this installation a file by which Eclipse
/// finds it, and none for any other, in "eclipse\links" of the program folder. The immediate pass hands the languages
/// over (ZQVECLIPSELINKS), the deferred one writes and deletes, a rollback puts back what was there. Where all of the
/// product is removed, the files' removal is left to the installer. Returns ERROR_SUCCESS; ERROR_INSTALL_FAILURE when a
/// property cannot be read or set, the program folder is invalid, or a file cannot be written or kept for the rollback;
/// ERROR_INSTALL_USEREXIT when copying was cancelled.
ResultCode ReconcileEclipseLinks();

/// A value as a file of properties has it, by the rules of java.util.Properties (its method "store"): a backslash
/// before : = # ! and \ and before a blank at its beginning; what is not printable ASCII as \u and four hexadecimal
/// digits of UTF-16. The value is in the system's code page; bytes that are no character of it are replaced as the
/// system does.
std::string PropertiesValue(std::string_view value);

}  // namespace zqv
