#include "platform/own_module.h"

// The linker's name for the beginning of the image, whose address is the module's handle.
extern "C" IMAGE_DOS_HEADER __ImageBase;  // NOLINT(readability-identifier-naming)

namespace zqv {

HMODULE OwnModule() { return reinterpret_cast<HMODULE>(&__ImageBase); }

}  // namespace zqv
