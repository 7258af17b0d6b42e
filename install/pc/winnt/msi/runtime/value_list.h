#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "base/note.h"

namespace zqv {

/// The values that an immediate action left for the deferred ones: one line of "NAME=value;" entries in a text file.
class ValueList {
 public:
  /// Reads the file's first line and indexes it; notes each step. False, with the list left unloaded, when that fails.
  /// An empty file is an empty list.
  [[nodiscard]] bool Load(const char *path, Note note);

  bool IsLoaded() const { return text_ != nullptr; }

  /// The value of the first entry whose name equals `name`, with regard to case; null data when there is none. Costs no
  /// pass over the list.
  std::string_view Find(std::string_view name) const;

 private:
  struct Entry {
    std::string_view name;
    std::string_view value;
  };

  bool ReadLine(const char *path, std::size_t size, Note note);
  void Index();

  std::unique_ptr<char[]> text_;
  std::vector<Entry> entries_;  ///< by name; of equal names the first in the list comes first
};

}  // namespace zqv
