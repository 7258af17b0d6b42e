#include "services/tables/record_counter.h"

#include "base/text.h"

namespace zqv {

namespace {

constexpr char kRecordCounter[] = "ZQVRECORDCOUNTER";

}  // namespace

UINT ReadRecordCounter(int &counter, DWORD length) {
  std::string value;
  const UINT result = GetProperty(kRecordCounter, value, length);
  counter = DecimalValue(value);
  return result;
}

UINT AdvanceRecordCounter(int counter) { return SetProperty(kRecordCounter, std::to_string(NextCounter(counter))); }

}  // namespace zqv
