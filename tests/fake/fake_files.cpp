#include <cerrno>
#include <cstdio>

#include "fake/call.h"
#include "platform/c_file.h"

namespace {

constexpr DWORD kSettable = 0x27;
constexpr DWORD kDelete = 0x10000;

/// The place of a path that the library gives, in a folder that is there.
Place FindInFolder(LPCSTR path) {
  Require(OrEmpty(path).size() < MAX_PATH, ERROR_PATH_NOT_FOUND);
  Place place = world.Find(OrEmpty(path));
  Require(place.folder != nullptr && (place.folder != world.root || place.node != nullptr), ERROR_PATH_NOT_FOUND);
  return place;
}

Place FindExisting(LPCSTR path) {
  Place place = FindInFolder(path);
  Require(place.node != nullptr, ERROR_FILE_NOT_FOUND);
  return place;
}

/// Whether nobody who has `place` open forbids this access, nor is forbidden his own by `share`.
bool IsShared(const Place &place, DWORD access, DWORD share) {
  const auto needs = [](DWORD rights) {
    return ((rights & (GENERIC_READ | FILE_LIST_DIRECTORY)) != 0 ? 1U : 0U) |
           ((rights & GENERIC_WRITE) != 0 ? 2U : 0U) | ((rights & kDelete) != 0 ? 4U : 0U);
  };
  const auto clashes = [&](const auto &entry) {
    const OpenObject &other = entry.second;
    const bool both = needs(access) != 0 && needs(other.access) != 0;  // else nobody asks what is shared
    return other.node != nullptr && other.node == place.node && both &&
           ((needs(access) & ~other.share) != 0 || (needs(other.access) & ~share) != 0);
  };
  return !world.held.contains(place.path) && std::none_of(world.objects.begin(), world.objects.end(), clashes);
}

/// The place of a file that may be opened so, or with `orFolder` of a folder; makes a file that is missing if it may.
Place FindToOpen(LPCSTR path, DWORD access, DWORD share, bool mayCreate, bool orFolder = false) {
  Place place = mayCreate ? FindInFolder(path) : FindExisting(path);
  if (place.node == nullptr) {
    place.node = place.folder->entries[place.name] = std::make_shared<Node>();
  }
  const DWORD forbidding = (orFolder ? 0 : FILE_ATTRIBUTE_DIRECTORY) |
                           ((access & (GENERIC_WRITE | kDelete)) != 0 ? FILE_ATTRIBUTE_READONLY : 0);
  Require(!(place.node->attributes & forbidding), ERROR_ACCESS_DENIED);
  Require(IsShared(place, access, share), ERROR_SHARING_VIOLATION);
  return place;
}

/// Compares with a pattern of "*" and "?".
bool Matches(std::u16string_view pattern, std::u16string_view name) {
  if (pattern.empty() || pattern[0] == '*') {
    return pattern.empty() ? name.empty()
                           : Matches(pattern.substr(1), name) || (!name.empty() && Matches(pattern, name.substr(1)));
  }
  return !name.empty() && (pattern[0] == '?' || pattern[0] == name[0]) && Matches(pattern.substr(1), name.substr(1));
}

// Streams. A text ends at a Ctrl-Z, and its lines end in two characters on the disk but in one for the reader.

ssize_t ReadStream(void *cookie, char *buffer, std::size_t size) {
  const AtWork atWork;
  OpenObject &stream = world.Object(Id(cookie), "stream");
  if (world.Count("fread") != 0) {
    errno = EIO;
    return -1;
  }
  const std::string &bytes = stream.node->bytes;
  std::size_t read = 0;
  for (; read < size && stream.next < bytes.size() && !(stream.isText && bytes[stream.next] == '\x1A'); ++stream.next) {
    if (!stream.isText || bytes.compare(stream.next, 2, "\r\n") != 0) {
      buffer[read++] = bytes[stream.next];
    }
  }
  return static_cast<ssize_t>(read);
}

ssize_t WriteStream(void *cookie, const char *buffer, std::size_t size) {
  const AtWork atWork;
  const OpenObject &stream = world.Object(Id(cookie), "stream");
  if (world.Count("fwrite") != 0) {
    errno = ENOSPC;
    return 0;
  }
  for (const char byte : std::string_view(buffer, size)) {
    stream.node->bytes += stream.isText && byte == '\n' ? "\r\n" : std::string(1, byte);
  }
  return static_cast<ssize_t>(size);
}

/// To the beginning only.
int RewindStream(void *cookie, off64_t *offset, int whence) {
  if (whence != SEEK_SET || *offset != 0) {
    return -1;
  }
  world.Object(Id(cookie), "stream").next = 0;
  return 0;
}

int CloseStream(void *cookie) { return world.Close(Id(cookie), {"stream"}, "fclose") == 0 ? 0 : -1; }

std::shared_ptr<Node> CopyOf(const Node &node) {
  const auto copy = std::make_shared<Node>(node);
  for (auto &[name, entry] : copy->entries) {
    entry = CopyOf(*entry);
  }
  return copy;
}

}  // namespace

World &ResetWorld(const World &from) {
  world = from;
  world.root = CopyOf(*from.root);
  return world;
}

Place World::Find(const std::string &path) {
  std::string text = path;
  Require(!text.empty(), ERROR_PATH_NOT_FOUND);
  std::replace(text.begin(), text.end(), '/', '\\');
  const bool share = text.starts_with("\\\\");
  text = share || text.substr(1, 1) == ":" ? text : "C:\\" + text;
  Require(share || text.size() == 2 || text[2] == '\\', ERROR_INVALID_NAME);
  const std::string signs = Signs(text);
  std::vector<std::string> elements{text.substr(0, share ? signs.find('\\', signs.find('\\', 2) + 1) : 2)};
  for (std::size_t start = elements[0].size() + 1, end = 0; start < text.size(); start = end + 1) {
    end = std::min(signs.find('\\', start), text.size());
    std::string element = text.substr(start, end - start);
    Require(signs.substr(start, end - start).find_first_of("<>:\"|?*") == std::string::npos, ERROR_INVALID_NAME);
    if (element == ".." && elements.size() > 1) {
      elements.pop_back();
    }
    element.erase(element.find_last_not_of(". ") + 1);  // as Windows does; this drops `.` and `..` too
    if (!element.empty()) {
      elements.push_back(element);
    }
  }
  Place place{.node = root};
  for (const std::string &element : elements) {
    const bool isLink = place.node != nullptr && !place.node->target.empty();
    place.folder = isLink ? Find(place.node->target).node : place.node;
    place.node = nullptr;
    if (place.folder != nullptr && !place.folder->IsFolder()) {
      place.folder = nullptr;
    } else if (place.folder != nullptr && place.folder->entries.count(element) != 0) {
      place.node = place.folder->entries[element];
    }
    place.path += (place.path.empty() ? "" : "\\") + element;
    place.name = element;
  }
  return place;
}

Node &World::MakeFolder(const std::string &path) {
  Node &node = WriteFile(path, "");
  node.attributes = FILE_ATTRIBUTE_DIRECTORY;
  return node;
}

void World::MakeJunction(const std::string &path, const std::string &target) {
  Node &link = MakeFolder(path);
  link.attributes |= FILE_ATTRIBUTE_REPARSE_POINT;
  link.target = target;
}

Node &World::WriteFile(const std::string &path, std::string_view bytes) {
  Place place = Find(path);
  if (place.folder == nullptr) {
    MakeFolder(place.path.substr(0, place.path.size() - place.name.size() - 1));
    place = Find(path);
  }
  auto &node = place.folder->entries[place.name];
  node = node != nullptr ? node : std::make_shared<Node>();
  node->bytes = bytes;
  return *node;
}

bool World::Move(const std::string &from, const std::string &to) {
  const Place place = Find(from);
  if (place.node == nullptr || !IsShared(place, kDelete, 7)) {
    return false;
  }
  place.folder->entries.erase(place.name);
  const Place target = Find(to);
  target.folder->entries[target.name] = place.node;
  return true;
}

void World::Remove(const std::string &path) {
  const Place place = Find(path);
  place.folder->entries.erase(place.name);
}

std::optional<std::string> World::ReadFile(const std::string &path) {
  const auto node = Find(path).node;
  return node != nullptr && !node->IsFolder() ? std::optional(node->bytes) : std::nullopt;
}

std::FILE *zqv::OpenCFile(const char *path, const char *mode) {
  std::FILE *const none = nullptr;
  return Call(none, [&] {
    const std::string how = OrEmpty(mode);
    world.See(OrEmpty(path) + " " + how, {});
    Require(how == "rt" || how == "rb" || how == "wt" || how == "wb" || how == "a+", ERROR_INVALID_PARAMETER);
    const bool reads = how[0] == 'r';
    const DWORD access = reads ? GENERIC_READ : how == "a+" ? GENERIC_READ | GENERIC_WRITE : GENERIC_WRITE;
    const Place place = FindToOpen(path, access, 3, !reads);
    if (how[0] == 'w') {
      place.node->bytes.clear();
    }
    OpenObject object{.kind = "stream", .name = place.path, .access = access, .share = 3, .node = place.node};
    object.isText = how.find('b') == std::string::npos;
    const std::uintptr_t stream = world.Open(object);
    return fopencookie(reinterpret_cast<void *>(stream), reads ? "r" : "a",
                       {ReadStream, WriteStream, RewindStream, CloseStream});
  });
}

HANDLE CreateFileA(LPCSTR path, DWORD access, DWORD share, SECURITY_ATTRIBUTES *, DWORD disposition, DWORD flags,
                   HANDLE) {
  return Call(INVALID_HANDLE_VALUE, [&] {
    world.See(OrEmpty(path), {access, share, disposition, flags});
    Require(disposition >= CREATE_NEW && disposition <= OPEN_EXISTING, ERROR_INVALID_PARAMETER);
    Require(disposition != CREATE_NEW || FindInFolder(path).node == nullptr, ERROR_FILE_EXISTS);
    Require(!OrEmpty(path).ends_with(':'), ERROR_PATH_NOT_FOUND);  // that is the drive's current folder, which is gone
    const bool orFolder = flags & FILE_FLAG_BACKUP_SEMANTICS;
    Place place = FindToOpen(path, access, share, disposition != OPEN_EXISTING, orFolder);
    if (!place.node->target.empty() && (flags & FILE_FLAG_OPEN_REPARSE_POINT) == 0) {
      place.node = FindExisting(place.node->target.c_str()).node;
    }
    if (disposition == CREATE_ALWAYS) {
      place.node->bytes.clear();
    }
    return world.Open({.kind = "file", .name = place.path, .access = access, .share = share, .node = place.node});
  });
}

BOOL GetFileInformationByHandle(HANDLE file, BY_HANDLE_FILE_INFORMATION *information) {
  return Call(FALSE, [&] {
    const OpenObject &object = world.Object(Id(file), "file");
    std::memset(information, kJunk, sizeof *information);
    information->dwFileAttributes = object.node->attributes;
  });
}

DWORD GetFileSize(HANDLE file, DWORD *high) {
  return Call(INVALID_FILE_SIZE, [&] {
    Require(high == nullptr, ERROR_INVALID_PARAMETER);
    return world.Object(Id(file), "file").node->bytes.size();
  });
}

BOOL DeleteFileA(LPCSTR path) {
  return Call(FALSE, [&] { world.Remove(FindToOpen(path, kDelete, 7, false).path); });
}

BOOL CreateDirectoryA(LPCSTR path, SECURITY_ATTRIBUTES *) {
  return Call(FALSE, [&] {
    const Place place = FindInFolder(path);
    Require(place.node == nullptr, place.folder == world.root ? ERROR_ACCESS_DENIED : ERROR_ALREADY_EXISTS);
    world.MakeFolder(place.path);
  });
}

BOOL RemoveDirectoryA(LPCSTR path) {
  return Call(FALSE, [&] {
    const Place place = FindExisting(path);
    Require(place.node->IsFolder(), ERROR_DIRECTORY);
    const bool readOnly = place.node->attributes & FILE_ATTRIBUTE_READONLY;
    Require(place.folder != world.root && !readOnly, ERROR_ACCESS_DENIED);
    Require(IsShared(place, kDelete, 7), ERROR_SHARING_VIOLATION);
    Require(place.node->entries.empty(), ERROR_DIR_NOT_EMPTY);
    world.Remove(place.path);
  });
}

BOOL MoveFileExA(LPCSTR from, LPCSTR to, DWORD flags) {
  return Call(FALSE, [&] {
    world.See(OrEmpty(from), {flags});
    Require((flags & MOVEFILE_DELAY_UNTIL_REBOOT) != 0 && to == nullptr, ERROR_INVALID_PARAMETER);
    world.rebootDeletes.push_back(FindExisting(from).path);
  });
}

BOOL CopyFileExA(LPCSTR from, LPCSTR to, LPPROGRESS_ROUTINE, void *, BOOL *cancel, DWORD flags) {
  return Call(FALSE, [&] {
    world.See(OrEmpty(from), {flags});
    const Place source = FindToOpen(from, GENERIC_READ, 3, false);
    const Place target = FindToOpen(to, GENERIC_WRITE, 0, true);
    Require(flags == 0 && source.node != target.node, ERROR_SHARING_VIOLATION);
    Require(*cancel == FALSE, 1235);
    *target.node = {.attributes = (source.node->attributes & kSettable) | 0x20, .bytes = source.node->bytes};
  });
}

HANDLE FindFirstFileA(LPCSTR pattern, WIN32_FIND_DATAA *found) {
  return Call(INVALID_HANDLE_VALUE, [&] {
    const std::string text = OrEmpty(pattern);
    const std::size_t cut = Signs(text).find_last_of("\\/:") + 1;
    Require(!text.empty() && text.size() < MAX_PATH, ERROR_PATH_NOT_FOUND);
    Require(Signs(text).find_first_of("<>\"|") == std::string::npos, ERROR_INVALID_NAME);
    const Place inside = world.Find(text.substr(0, cut) + "x");  // behind a link
    Require(inside.folder != nullptr, ERROR_PATH_NOT_FOUND);
    NameMap<std::shared_ptr<Node>> all = inside.folder->entries;
    if (std::count(inside.path.begin(), inside.path.end(), '\\') > 1) {
      all["."] = all[".."] = inside.folder;
    }
    OpenObject search{.kind = "search", .access = FILE_LIST_DIRECTORY, .share = 3, .node = inside.folder, .next = 1};
    const std::u16string wanted = Folded(text.substr(cut) == "*.*" ? "*" : text.substr(cut));
    WIN32_FIND_DATAA data;
    std::memset(&data, kJunk, sizeof data);
    for (const auto &[name, node] : all) {
      if (Matches(wanted, Folded(name))) {
        data.dwFileAttributes = node->attributes;
        Fill(data.cFileName, sizeof data.cFileName, name);
        search.found.push_back(data);
      }
    }
    Require(!search.found.empty(), ERROR_FILE_NOT_FOUND);
    *found = search.found[0];
    return world.Open(search);
  });
}

BOOL FindNextFileA(HANDLE search, WIN32_FIND_DATAA *found) {
  return Call(FALSE, [&] {
    OpenObject &object = world.Object(Id(search), "search");
    Require(object.next < object.found.size(), ERROR_NO_MORE_FILES);
    *found = object.found[object.next++];
  });
}

BOOL FindClose(HANDLE search) { return world.Close(Id(search), {"search"}) == 0; }

DWORD GetFileAttributesA(LPCSTR path) {
  return Call(INVALID_FILE_ATTRIBUTES, [&] { return FindExisting(path).node->attributes; });
}

BOOL SetFileAttributesA(LPCSTR path, DWORD attributes) {
  return Call(FALSE, [&] {
    DWORD &now = FindExisting(path).node->attributes;
    now = (now & ~kSettable) | (attributes & kSettable);
  });
}

UINT GetDriveTypeA(LPCSTR root) { return world.mappedDrives.count(OrEmpty(root)) != 0 ? DRIVE_REMOTE : 3; }

UINT GetSystemDirectoryA(LPSTR buffer, UINT capacity) {
  return Call(UINT{0}, [&] {
    world.See("", {capacity});
    Fill(buffer, capacity, "C:\\windows\\system32");
    return std::strlen(buffer);
  });
}

BOOL GetVolumeInformationA(LPCSTR root, LPSTR label, DWORD capacity, DWORD *, DWORD *, DWORD *, LPSTR, DWORD) {
  return Call(FALSE, [&] {
    world.See(OrEmpty(root), {capacity});
    Fill(label, capacity, Known(world.volumeLabels, OrEmpty(root), ERROR_PATH_NOT_FOUND));
  });
}
