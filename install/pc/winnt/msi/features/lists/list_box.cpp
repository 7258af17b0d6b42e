#include "features/lists/list_box.h"

#include "base/text.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "runtime/table_query.h"
#include "services/tables/table_row.h"

namespace zqv {

namespace {

/// Looks in the table of tables: a query of a missing one would be logged as a failure.
bool HasTable() {
  ResultCode ignored = ERROR_SUCCESS;
  bool found = false;
  const bool complete = VisitRows("SELECT * FROM _Tables WHERE Name='ListBox'", ignored, [&](MSIHANDLE) {
    found = true;
    return false;
  });
  if (complete) {
    LogLine("No ListBox table");
  }
  return found;
}

void Clear(const char *property) {
  ResultCode ignored = ERROR_SUCCESS;
  DeleteRows(Format("SELECT * FROM ListBox WHERE Property='%s'", property).c_str(), ignored);
}

}  // namespace

ListBox::ListBox(const char *property) : property_(property), hasTable_(HasTable()) {
  if (hasTable_) {
    Clear(property);
  }
}

void ListBox::Add(const std::string &text) {
  ++rows_;
  if (hasTable_) {
    const std::string value = std::to_string(rows_);
    const FieldValue fields[] = {property_, rows_, value.c_str(), text.c_str()};
    static_cast<void>(iwiAddTableRow({"ListBox", fields}));  // a failure has its line
  }
}

ResultCode ClearAllListBoxes() {
  if (HasTable()) {
    for (const char *property : {kProductList, kFeatureList, kSummaryList}) {
      Clear(property);
    }
  }
  return ResultOf(SetProperties({{kProductAnswer, "0"}, {kFeatureAnswer, "0"}}));
}

}  // namespace zqv
