#include "runtime/copy_cancel.h"

#include "platform/compiler.h"

namespace zqv {

ZQV_SHARED_BETWEEN_PROCESSES BOOL copyCancelled = FALSE;

}  // namespace zqv
