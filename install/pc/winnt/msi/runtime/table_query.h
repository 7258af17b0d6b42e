#pragma once

#include <functional>
#include <string>

#include "base/result_code.h"
#include "platform/msi.h"

namespace zqv {

/// Reading the tables of the running installation, and deleting rows that were added to them.

/// Reads a text field. A text of more than 515 characters is an error (ERROR_MORE_DATA). Returns the installer's code,
/// with `text` empty unless it is ERROR_SUCCESS; logs nothing.
[[nodiscard]] ResultCode ReadRecordText(MSIHANDLE record, UINT field, std::string &text);

/// Hands each row that the query finds to `visit`, until that gives false. A failing installer call is logged and ends
/// the walk; `result` gets the code of the first one, unless it holds a failure already. Returns true when the walk
/// came to the last row.
bool VisitRows(const char *query, ResultCode &result, const std::function<bool(MSIHANDLE row)> &visit);

/// Deletes the rows that the query finds. It is run afresh for each, since its view may end where a row of it has gone.
/// The first call that fails is logged and ends it, and so does a row that stays; `result` as VisitRows has it. Returns
/// true when none is left.
bool DeleteRows(const char *query, ResultCode &result);

}  // namespace zqv
