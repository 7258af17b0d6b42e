#pragma once

#include <span>

#include "base/result_code.h"
#include "platform/win32.h"
#include "runtime/record.h"

namespace zqv {

/// Adding rows to the tables of the running installation. The rows are temporary: they live in this session only and
/// are never written to the package.

struct TableRow {
  const char *table;
  std::span<const FieldValue> values;
};

/// Adds a row. Every field is tried, also after one has failed; the row is added if the last field could be set.
/// Returns ERROR_SUCCESS, ERROR_INSTALL_FAILURE, or the code of the last installer call that failed.
[[nodiscard]] ResultCode iwiAddTableRow(const TableRow &row);

}  // namespace zqv
