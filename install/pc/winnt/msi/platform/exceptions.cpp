#include <cstdlib>
#include <exception>
#include <new>

/// Takes the place of parts of the run-time library, which would double the size of ours: its own versions bring in
/// formatting, a second class of strings, random devices and the spelling of types' names.

namespace {

/// What the containers and strings throw; the frame logs its text.
class RuntimeError : public std::exception {
 public:
  explicit RuntimeError(const char *text) : text_(text) {}
  const char *what() const noexcept override { return text_; }

 private:
  const char *text_;
};

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl58-cpp,readability-identifier-naming): the run-time's own names
namespace std {

void __throw_bad_alloc() { throw bad_alloc(); }
void __throw_bad_array_new_length() { throw bad_array_new_length(); }
void __throw_bad_function_call() { throw RuntimeError("bad_function_call"); }
void __throw_length_error(const char *text) { throw RuntimeError(text); }
void __throw_logic_error(const char *text) { throw RuntimeError(text); }
void __throw_out_of_range_fmt(const char *format, ...) { throw RuntimeError(format); }

}  // namespace std

namespace __gnu_cxx {

/// Its own version would write to a console, which an installer engine does not have.
void __verbose_terminate_handler() { std::abort(); }

}  // namespace __gnu_cxx
// NOLINTEND(bugprone-reserved-identifier,cert-dcl58-cpp,readability-identifier-naming)
