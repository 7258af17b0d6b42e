#include <strings.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>

#include "fake/call.h"
#include "platform/c_file.h"

namespace fs = std::filesystem;

namespace {

constexpr DWORD kArchive = 0x20;
constexpr DWORD kDelete = 0x10000;
constexpr DWORD kMountPoint = 0xA0000003;

bool SameName(const std::string &a, const std::string &b) {
  return strcasecmp(a.c_str(), b.c_str()) == 0;
}

/// Whether `name` fits a pattern with `*` and `?`; a `?` also stands for no character before a dot or the end.
bool Matches(const char *pattern, const char *name) {
  const bool more = *name != '\0';
  switch (*pattern) {
    case '\0':
      return !more;
    case '*':
      return Matches(pattern + 1, name) || (more && Matches(pattern, name + 1));
    case '?':
      return ((!more || *name == '.') && Matches(pattern + 1, name)) || (more && Matches(pattern + 1, name + 1));
    default:
      return strncasecmp(pattern, name, 1) == 0 && Matches(pattern + 1, name + 1);
  }
}

DWORD AttributesOf(const World &world, const std::string &host, const std::string &name) {
  const auto own = world.attributes.find(name);
  const DWORD set = own == world.attributes.end() ? 0 : own->second;
  if (fs::is_directory(host)) {
    return set | FILE_ATTRIBUTE_DIRECTORY | (fs::is_symlink(host) ? FILE_ATTRIBUTE_REPARSE_POINT : 0);
  }
  return own == world.attributes.end() ? kArchive : set == 0 ? FILE_ATTRIBUTE_NORMAL : set;
}

WIN32_FIND_DATAA FindData(const World &world, const Place &folder, const std::string &shown) {
  const bool dots = shown == "." || shown == "..";
  const std::string host = dots ? folder.host : folder.host + "/" + shown;
  WIN32_FIND_DATAA data;
  std::memset(&data, kJunk, sizeof data);
  data.dwFileAttributes = AttributesOf(world, host, dots ? folder.name : folder.name + "\\" + shown);
  data.nFileSizeHigh = 0;
  data.nFileSizeLow = fs::is_directory(host) ? 0 : static_cast<DWORD>(fs::file_size(host));
  data.dwReserved0 = data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT ? kMountPoint : data.dwReserved0;
  Fill(data.cFileName, sizeof data.cFileName, shown);
  return data;
}

/// Checks that nobody who has `place` open forbids this access, nor is forbidden his own by `share`.
void CheckShared(const World &world, const Place &place, DWORD access, DWORD share) {
  const auto needs = [](DWORD rights) {
    return (rights & GENERIC_READ ? 1U : 0U) | (rights & GENERIC_WRITE ? 2U : 0U) | (rights & kDelete ? 4U : 0U);
  };
  Require(world.held.count(place.name) == 0, ERROR_SHARING_VIOLATION);
  for (const auto &[handle, other] : world.objects) {
    const bool file = other.kind == "file" || other.kind == "stream" || other.kind == "search";
    const bool clash = (needs(access) & ~other.share) != 0 || (needs(other.access) & ~share) != 0;
    Require(!file || !clash || !SameName(other.name, place.name), ERROR_SHARING_VIOLATION);
  }
}

/// Checks that a file may be opened so, and gives its place.
Place FindToOpen(World &world, LPCSTR path, DWORD access, DWORD share, bool mayCreate) {
  const Place place = mayCreate ? world.Find(path) : world.FindExisting(path);
  Require(place.parentExists, ERROR_PATH_NOT_FOUND);
  const DWORD forbidding =
      FILE_ATTRIBUTE_DIRECTORY | (access & (GENERIC_WRITE | kDelete) ? FILE_ATTRIBUTE_READONLY : 0);
  Require(!(place.attributes & forbidding), ERROR_ACCESS_DENIED);
  CheckShared(world, place, access, share);
  return place;
}

std::string BytesAt(const std::string &host) {
  std::ifstream file(host, std::ios::binary);
  std::string bytes(fs::file_size(host), '\0');
  file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return bytes;
}

/// A text as Windows reads it: up to a Ctrl-Z, with plain line ends.
std::string AsText(std::string bytes) {
  bytes.erase(std::min(bytes.find('\x1A'), bytes.size()));
  for (std::size_t at = 0; (at = bytes.find("\r\n", at)) != std::string::npos;) {
    bytes.erase(at, 1);
  }
  return bytes;
}

/// What a stream reads is taken at its first read; what it writes goes to the end of the file at each flush.
struct Stream {
  std::string host;
  std::uintptr_t handle;
  bool text, failing;
  std::optional<std::string> content;
  std::size_t at = 0;

  const std::string &Content() {
    return content ? *content : content.emplace(text ? AsText(BytesAt(host)) : BytesAt(host));
  }
};

ssize_t ReadStream(void *cookie, char *buffer, std::size_t size) {
  Stream &stream = *static_cast<Stream *>(cookie);
  if (TheWorld().Count("fread") != 0) {
    errno = EIO;
    return -1;
  }
  const std::size_t read = stream.Content().copy(buffer, size, std::min(stream.at, stream.Content().size()));
  stream.at += read;
  return static_cast<ssize_t>(read);
}

ssize_t WriteStream(void *cookie, const char *buffer, std::size_t size) {
  Stream &stream = *static_cast<Stream *>(cookie);
  if (TheWorld().Count("fwrite") != 0 || stream.failing) {
    errno = ENOSPC;
    return 0;
  }
  std::ofstream file(stream.host, std::ios::binary | std::ios::app);
  for (std::size_t at = 0; at < size; ++at) {
    file << (stream.text && buffer[at] == '\n' ? "\r" : "") << buffer[at];
  }
  stream.content.reset();
  stream.at = std::string::npos;
  return static_cast<ssize_t>(size);
}

int SeekStream(void *cookie, off64_t *offset, int whence) {
  Stream &stream = *static_cast<Stream *>(cookie);
  const std::size_t size = stream.Content().size();
  *offset += static_cast<off64_t>(whence == SEEK_CUR ? std::min(stream.at, size) : whence == SEEK_END ? size : 0);
  stream.at = static_cast<std::size_t>(std::max<off64_t>(*offset, 0));
  return *offset < 0 ? -1 : 0;
}

int CloseStream(void *cookie) {
  const std::unique_ptr<Stream> stream(static_cast<Stream *>(cookie));
  return TheWorld().Close("fclose", stream->handle, {"stream"}) == 0 ? 0 : -1;
}

}  // namespace

Place World::Find(const char *path) {
  std::string text = OrEmpty(path);
  Require(!text.empty() && text.size() < MAX_PATH, ERROR_PATH_NOT_FOUND);
  std::replace(text.begin(), text.end(), '/', '\\');
  const bool share = text.rfind("\\\\", 0) == 0;
  text = share || text.substr(1, 1) == ":" ? text : "C:\\" + text;
  const std::size_t rootDepth = share ? 2 : 1;  // \\server\share, or the drive
  std::vector<std::string> elements;
  for (std::size_t start = 0, end = 0; start < text.size(); start = end + 1) {
    end = std::min(text.find('\\', start), text.size());
    std::string element = text.substr(start, end - start);
    const bool drive = start == 0 && element.size() == 2;
    Require(element.find_first_of(drive ? "<>\"|?*" : "<>\"|?*:") == std::string::npos, ERROR_INVALID_NAME);
    if (element == ".." && elements.size() > rootDepth) {
      elements.pop_back();
    }
    element.erase(element.find_last_not_of(". ") + 1);  // as Windows does; this drops `.` and `..` too
    if (!element.empty()) {
      elements.push_back(element);
    }
  }
  Require(share || drives.count(elements[0].substr(0, 1)) != 0, ERROR_PATH_NOT_FOUND);
  Place place{share ? "\\" : "", root + (share ? "/unc" : "/drives"), true, true, elements.size() <= rootDepth, 0};
  fs::create_directories(place.host +
                         (share ? "" : "/" + std::string(1, static_cast<char>(elements[0][0] | 0x20)) + ":"));
  for (const std::string &element : elements) {
    place.parentExists = place.exists && fs::is_directory(place.host);
    place.exists = false;
    std::string real = element;
    std::error_code error;  // no folder: nothing to go through
    for (const auto &entry : fs::directory_iterator(place.host, error)) {
      if (SameName(entry.path().filename(), element)) {
        place.exists = true;
        real = entry.path().filename();
      }
    }
    place.name += (place.name.empty() ? "" : "\\") + element;
    place.host += "/" + real;
  }
  Require(deniedPaths.count(place.name) == 0, ERROR_ACCESS_DENIED);
  place.attributes = place.exists ? AttributesOf(*this, place.host, place.name) : 0;
  return place;
}

Place World::FindExisting(const char *path) {
  Place place = Find(path);
  Require(place.parentExists, ERROR_PATH_NOT_FOUND);
  Require(place.exists, ERROR_FILE_NOT_FOUND);
  return place;
}

std::string World::HostPath(const std::string &path) {
  const NameSet denied = std::exchange(deniedPaths, {});
  const std::string host = Find(path.c_str()).host;
  deniedPaths = denied;
  return host;
}

void World::WriteFile(const std::string &path, std::string_view bytes) {
  const fs::path host = HostPath(path);
  fs::create_directories(host.parent_path());
  std::ofstream(host, std::ios::binary) << bytes;
}

std::optional<std::string> World::ReadFile(const std::string &path) {
  const std::string host = HostPath(path);
  return fs::is_regular_file(host) ? std::optional(BytesAt(host)) : std::nullopt;
}

void World::MakeFolder(const std::string &path) {
  fs::create_directories(HostPath(path));
}

void World::MakeJunction(const std::string &path, const std::string &target) {
  fs::create_directory_symlink(HostPath(target), HostPath(path));
}

bool World::Exists(const std::string &path) {
  return fs::exists(fs::symlink_status(HostPath(path)));
}

std::FILE *OpenCFile(const char *path, const char *mode) {
  std::FILE *const none = nullptr;
  std::FILE *const opened = Call("OpenCFile", none, [&](World &world) {
    const std::string how = OrEmpty(mode);
    const bool reads = how.rfind('r', 0) == 0, adds = how.rfind('a', 0) == 0, both = how.find('+') != std::string::npos;
    Require((reads && !both) || how.rfind('w', 0) == 0 || adds, ERROR_INVALID_PARAMETER);
    OpenObject object("stream");
    object.access = (reads || both ? GENERIC_READ : 0) | (reads ? 0 : GENERIC_WRITE);
    object.share = 3;
    const Place place = FindToOpen(world, path, object.access, object.share, !reads);
    if (!reads) {
      std::ofstream(place.host, std::ios::binary | (adds ? std::ios::app : std::ios::trunc));
    }
    object.name = place.name;
    const bool text = how.find('b') == std::string::npos, failing = world.failWritesTo.count(place.name) != 0;
    auto *const stream = new Stream{place.host, world.Open(object), text, failing, {}};
    const std::string plain = how.substr(0, 1) + (both ? "+" : "");
    return fopencookie(stream, plain.c_str(), {ReadStream, WriteStream, SeekStream, CloseStream});
  });
  const DWORD error = TheWorld().lastError;
  errno = opened != nullptr ? errno : error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ? ENOENT : EACCES;
  return opened;
}

extern "C" {

HANDLE CreateFileA(LPCSTR path, DWORD access, DWORD share, SECURITY_ATTRIBUTES *, DWORD disposition, DWORD flags,
                   HANDLE) {
  return Call("CreateFileA", INVALID_HANDLE_VALUE, [&](World &world) {
    Require(disposition != CREATE_NEW || !world.Find(path).exists, ERROR_FILE_EXISTS);
    const bool creates = disposition != OPEN_EXISTING;
    const Place place = FindToOpen(world, path, access | (creates ? GENERIC_WRITE : 0), share, creates);
    if (creates) {
      std::ofstream(place.host, std::ios::binary | std::ios::trunc);
      world.attributes[place.name] = (flags & 7) | kArchive;
    }
    OpenObject object("file", place.name);
    object.access = access;
    object.share = share;
    return reinterpret_cast<HANDLE>(world.Open(object));
  });
}

DWORD GetFileSize(HANDLE file, DWORD *high) {
  return Call("GetFileSize", INVALID_FILE_SIZE, [&](World &world) {
    const std::uintmax_t size = fs::file_size(world.HostPath(world.Object(Id(file), "file").name));
    if (high != nullptr) {
      *high = static_cast<DWORD>(size >> 32);
    }
    return size;
  });
}

BOOL DeleteFileA(LPCSTR path) {
  return Call("DeleteFileA", FALSE, [&](World &world) {
    const Place place = FindToOpen(world, path, kDelete, 7, false);
    fs::remove(place.host);
    world.attributes.erase(place.name);
  });
}

BOOL CreateDirectoryA(LPCSTR path, SECURITY_ATTRIBUTES *) {
  return Call("CreateDirectoryA", FALSE, [&](World &world) {
    const Place place = world.Find(path);
    Require(place.parentExists, ERROR_PATH_NOT_FOUND);
    Require(!place.exists, place.isRoot ? ERROR_ACCESS_DENIED : ERROR_ALREADY_EXISTS);
    fs::create_directory(place.host);
  });
}

BOOL RemoveDirectoryA(LPCSTR path) {
  return Call("RemoveDirectoryA", FALSE, [&](World &world) {
    const Place place = world.FindExisting(path);
    Require(place.attributes & FILE_ATTRIBUTE_DIRECTORY, ERROR_DIRECTORY);
    Require(!place.isRoot && !(place.attributes & FILE_ATTRIBUTE_READONLY), ERROR_ACCESS_DENIED);
    CheckShared(world, place, kDelete, 7);
    Require(fs::is_symlink(place.host) || fs::is_empty(place.host), ERROR_DIR_NOT_EMPTY);
    fs::remove(place.host);
    world.attributes.erase(place.name);
  });
}

BOOL MoveFileExA(LPCSTR from, LPCSTR to, DWORD flags) {
  return Call("MoveFileExA", FALSE, [&](World &world) {
    Require(flags == MOVEFILE_DELAY_UNTIL_REBOOT && to == nullptr, ERROR_INVALID_PARAMETER);
    world.rebootDeletes.push_back(world.FindExisting(from).name);
  });
}

BOOL CopyFileExA(LPCSTR from, LPCSTR to, LPPROGRESS_ROUTINE, void *, BOOL *cancel, DWORD flags) {
  return Call("CopyFileExA", FALSE, [&](World &world) {
    const Place source = FindToOpen(world, from, GENERIC_READ, 3, false);
    const Place target = FindToOpen(world, to, GENERIC_WRITE, 0, true);
    Require(!(flags & 1) || !target.exists, ERROR_FILE_EXISTS);
    Require(!SameName(source.name, target.name), ERROR_SHARING_VIOLATION);
    Require(cancel == nullptr || *cancel == FALSE, 1235);
    fs::copy_file(source.host, target.host, fs::copy_options::overwrite_existing);
    world.attributes[target.name] = (source.attributes & ~FILE_ATTRIBUTE_NORMAL) | kArchive;
  });
}

HANDLE FindFirstFileA(LPCSTR pattern, WIN32_FIND_DATAA *found) {
  return Call("FindFirstFileA", INVALID_HANDLE_VALUE, [&](World &world) {
    const std::string text = OrEmpty(pattern);
    const std::size_t cut = text.find_last_of("\\/:") + 1;
    Require(!text.empty() && text.size() < MAX_PATH, ERROR_PATH_NOT_FOUND);
    Require(text.find_first_of("<>\"|") == std::string::npos, ERROR_INVALID_NAME);
    const Place folder = world.Find(cut == 0 ? "." : text.substr(0, cut).c_str());
    Require(folder.exists && fs::is_directory(folder.host), ERROR_PATH_NOT_FOUND);
    std::set<std::string, IgnoreCase> names;
    for (const auto &entry : fs::directory_iterator(folder.host)) {
      names.insert(entry.path().filename());
    }
    if (!folder.isRoot) {
      names.insert({".", ".."});
    }
    OpenObject search("search", folder.name);
    search.share = 3;  // a folder cannot go while it is searched
    search.next = 1;
    for (const std::string &name : names) {
      if (Matches(text.substr(cut) == "*.*" ? "*" : text.c_str() + cut, name.c_str())) {
        search.found.push_back(FindData(world, folder, name));
      }
    }
    Require(!search.found.empty(), ERROR_FILE_NOT_FOUND);
    *found = search.found[0];
    return reinterpret_cast<HANDLE>(world.Open(search));
  });
}

BOOL FindNextFileA(HANDLE search, WIN32_FIND_DATAA *found) {
  return Call("FindNextFileA", FALSE, [&](World &world) {
    OpenObject &object = world.Object(Id(search), "search");
    Require(object.next < object.found.size(), ERROR_NO_MORE_FILES);
    *found = object.found[object.next++];
  });
}

BOOL FindClose(HANDLE search) {
  return TheWorld().Close("FindClose", Id(search), {"search"}) == 0;
}

DWORD GetFileAttributesA(LPCSTR path) {
  return Call("GetFileAttributesA", INVALID_FILE_ATTRIBUTES,
              [&](World &world) { return world.FindExisting(path).attributes; });
}

BOOL SetFileAttributesA(LPCSTR path, DWORD attributes) {
  return Call("SetFileAttributesA", FALSE,
              [&](World &world) { world.attributes[world.FindExisting(path).name] = attributes & 0x27; });
}

}  // extern "C"
