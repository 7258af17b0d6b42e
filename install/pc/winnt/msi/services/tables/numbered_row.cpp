#include "services/tables/numbered_row.h"

#include <string>

#include "base/text.h"

namespace zqv {

namespace {

constexpr char kCounter[] = "ZQVRECORDCOUNTER";

}  // namespace

ResultCode AddNumberedRow(const char *prefix, const std::function<std::optional<ResultCode>(const char *key)> &add,
                          DWORD length) {
  std::string value;
  if (!GetProperty(kCounter, value, length)) {
    return ERROR_INSTALL_FAILURE;
  }
  const int counter = DecimalValue(value);
  const std::optional<ResultCode> added = add((prefix + std::to_string(counter)).c_str());
  if (!added) {
    return ERROR_INSTALL_FAILURE;
  }
  return SetProperty(kCounter, std::to_string(NextCounter(counter))) ? *added : ResultOf(false);
}

}  // namespace zqv
