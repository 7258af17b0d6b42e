#pragma once

#include <string>

namespace zqv {

/// A value as one parameter of a command line: in quotes, so that the program's own argument parser gives it back
/// whole, whatever blanks, quotes and backslashes it has. The rules are those of CommandLineToArgvW and of the C
/// run-time library ("Parsing C++ command-line arguments"). An empty value is a pair of quotes: an empty argument.
std::string QuotedArgument(const std::string &value);

}  // namespace zqv
