#pragma once

#include <string>
#include <string_view>

namespace zqv {

/// What may be the path of a folder that the installation makes, or finds recorded. The names that Windows cannot have
/// are those of its documentation ("Naming Files, Paths, and Namespaces").

/// A folder as it is judged, published and compared: tidied, with a backslash at its end. Empty for a value that says
/// nothing: an empty one, blanks, quotes.
std::string TidiedFolder(const std::string &value);

/// True for a tidied folder that
///
/// - begins with a drive letter, colon and backslash, or with two backslashes, a server and a share, neither of them
///   one dot or a question mark; the root of a drive or share is one;
///
/// - holds no control character, none of < > " | ? * / and ;, and no further colon: a ";" would end the value in the
///   list of values for deferred actions;
///
/// - has no element that is of dots only, begins or ends with a blank, ends with a dot, or is up to its first dot the
///   name of a device: CON, PRN, AUX, NUL, COM1 to COM9, LPT1 to LPT9, in any case;
///
/// - has at most 247 characters, the one behind its last element included: no folder can be made that has more.
bool IsValidFolder(const std::string &folder);

/// True for the root of a drive or of a share. The folder is a valid one.
bool IsRoot(const std::string &folder);

/// True for the plain name of a file or folder: it holds no control character and none of \ / : * ? " < > and |, ends
/// neither with a dot nor with a blank, and is not the name of a device, as above.
bool IsFileName(std::string_view name);

/// True for the path of something below a folder: such names, with one backslash between them.
bool IsPathBelow(std::string_view path);

}  // namespace zqv
