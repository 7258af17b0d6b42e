#pragma once

#include <string>

namespace zqv {

/// The full path of a file in the installation's temporary folder (ZQVTEMP, else TempFolder): prefix, four hexadecimal
/// digits, extension. Normally the first number whose file did not exist, and that file is made, empty. With
/// `persistNumber` the number is shared by all such names of the installation through ZQVTEMPFILENUM: once it is known,
/// the name is composed of it and the file is neither made nor looked for. Empty when no name could be found.
std::string TempName(bool persistNumber, const char *prefix, const char *extension);

// The files that an installation has by that number: what hands values to deferred actions, the temporary log, the
// message library, and the catalogue.

std::string ValueListName();
std::string TempLogName();
std::string MessageLibraryName();
std::string CatalogueName();

}  // namespace zqv
