#include <cstdlib>

/// Takes the place of the run-time library's own handler, which would write the name of an uncaught exception's type to
/// a console that an installer engine does not have, and brings 48 KB of code for spelling that name.
namespace __gnu_cxx {

[[noreturn]] void __verbose_terminate_handler();  // NOLINT(bugprone-reserved-identifier)
void __verbose_terminate_handler() { std::abort(); }

}  // namespace __gnu_cxx
