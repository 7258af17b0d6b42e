#pragma once

#include <string>

#include "base/result_code.h"

namespace zqv {

/// The lists that dialogs show: the rows of the ListBox table that name a list's property. They are temporary, and only
/// shown: what fails here is logged and keeps no action from going on.

inline constexpr char kProductList[] = "ZQVPRODUCTPREREQLIST";
inline constexpr char kFeatureList[] = "ZQVFEATUREPREREQLIST";
inline constexpr char kSummaryList[] = "ZQVSUMMARYLIST";

// Whether the first two have rows: "1" or "0".
inline constexpr char kProductAnswer[] = "ZQVPRODUCTPREREQ";
inline constexpr char kFeatureAnswer[] = "ZQVFEATUREPREREQ";

/// A list that is written anew, row by row. Where the package has no ListBox table, which is logged, it has no rows.
class ListBox {
 public:
  /// Clears the list.
  explicit ListBox(const char *property);

  /// Adds a row behind the others; its value is its number.
  void Add(const std::string &text);

  /// True when no row was to be added, whatever has become of it.
  bool IsEmpty() const { return rows_ == 0; }

 private:
  const char *property_;
  bool hasTable_;
  int rows_ = 0;
};

/// iwiClearAllListboxes: clears the three lists and answers that nothing is missing. Returns ERROR_SUCCESS, or
/// ERROR_INSTALL_FAILURE when an answer cannot be set.
ResultCode ClearAllListBoxes();

}  // namespace zqv
