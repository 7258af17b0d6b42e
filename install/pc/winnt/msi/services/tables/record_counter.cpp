#include "services/tables/record_counter.h"

#include "base/text.h"

namespace zqv {

namespace {

constexpr char kRecordCounter[] = "ZQVRECORDCOUNTER";

}  // namespace

bool ReadRecordCounter(int &counter, DWORD length) {
  std::string value;
  const bool read = GetProperty(kRecordCounter, value, length);
  counter = DecimalValue(value);
  return read;
}

bool AdvanceRecordCounter(int counter) { return SetProperty(kRecordCounter, std::to_string(NextCounter(counter))); }

}  // namespace zqv
