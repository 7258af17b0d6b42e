#include "runtime/value_list.h"

#include <algorithm>
#include <new>

#include "base/text.h"
#include "platform/c_file.h"
#include "platform/owner.h"

namespace zqv {

namespace {

/// Assumed for a file whose size is not known.
constexpr LONG kDefaultSize = 512000;

}  // namespace

bool ValueList::Load(const char *path, Note note) {
  OwnedFile file(CreateFileA(path, GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) {
    note("***Can't open '%s' (%d)", path, static_cast<int>(GetLastError()));
    return false;
  }
  LONG size = static_cast<LONG>(GetFileSize(file.Get(), nullptr));
  file.Reset();
  if (size < 1) {
    note("***Can't get file size");
    size = kDefaultSize;
  }
  note("Size of value list is %d", static_cast<int>(size));
  if (!ReadLine(path, static_cast<std::size_t>(size), note)) {
    return false;
  }
  try {
    Index();
  } catch (const std::bad_alloc &) {
    note("Can't allocate property value list work (%d)", static_cast<int>(size));
    text_.reset();
    entries_.clear();
    return false;
  }
  return true;
}

bool ValueList::ReadLine(const char *path, std::size_t size, Note note) {
  const std::size_t capacity = size + 4;
  std::unique_ptr<char[]> text(new (std::nothrow) char[capacity]);
  if (!text) {
    note("Can't allocate property value list (%d)", static_cast<int>(capacity));
    return false;
  }
  OwnedStream file(OpenCFile(path, "rt"));
  if (!file) {
    note("Can't open '%s'", path);
    return false;
  }
  text[0] = '\0';
  if (std::fgets(text.get(), static_cast<int>(size + 1), file.Get()) == nullptr && std::ferror(file.Get()) != 0) {
    note("***Can't read '%s'", path);
    return false;
  }
  text_ = std::move(text);
  return true;
}

void ValueList::Index() {
  entries_.clear();
  const std::string_view list = CutAtLineBreak(text_.get());
  for (std::size_t at = 0; at < list.size();) {
    // Deliberate: an entry's end is looked for at once, but the next entry from one character further. So an empty
    // entry swallows its successor, and a value that ends in ";" swallows the next property.
    const std::string_view entry = list.substr(at, list.find(';', at) - at);
    const std::size_t equals = entry.find('=');
    if (equals != std::string_view::npos) {
      entries_.push_back({entry.substr(0, equals), entry.substr(equals + 1)});
    }
    const std::size_t next = list.find(';', at + 1);
    at = next == std::string_view::npos ? list.size() : next + 1;
  }
  std::stable_sort(entries_.begin(), entries_.end(), [](const Entry &a, const Entry &b) { return a.name < b.name; });
}

std::string_view ValueList::Find(std::string_view name) const {
  const auto found = std::lower_bound(entries_.begin(), entries_.end(), name,
                                      [](const Entry &entry, std::string_view wanted) { return entry.name < wanted; });
  return found != entries_.end() && found->name == name ? found->value : std::string_view();
}

}  // namespace zqv
