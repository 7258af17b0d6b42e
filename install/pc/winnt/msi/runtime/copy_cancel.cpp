#include "runtime/copy_cancel.h"

#include "platform/compiler.h"

ZQV_SHARED_BETWEEN_PROCESSES BOOL copyCancelled = FALSE;
