#pragma once

#include <span>

#include "platform/win32.h"

/// Adding rows to the tables of the running installation. The rows are temporary: they live in this session only and
/// are never written to the package.

/// A field's value. Which member counts is said by the row's mask.
struct RowValue {
  RowValue(int number) : integer(number) {}
  RowValue(const char *string) : text(string) {}

  int integer = 0;
  const char *text = nullptr;  ///< null and empty both give a null field
};

struct TableRow {
  const char *table;
  UINT integers;  ///< a bit for each field from bit 0 on; set: the field is an integer
  std::span<const RowValue> values;
};

/// Adds a row. Every field is tried, also after one has failed; the row is added if the last field could be set.
/// Returns ERROR_SUCCESS, ERROR_INSTALL_FAILURE, or the code of the last installer call that failed.
UINT iwiAddTableRow(const TableRow &row);
