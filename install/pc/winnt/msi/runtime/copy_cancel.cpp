#include "runtime/copy_cancel.h"

#include "platform/compiler.h"

namespace zqv {

ZQV_SHARED_BETWEEN_PROCESSES volatile BOOL copyCancelled = FALSE;

}  // namespace zqv
