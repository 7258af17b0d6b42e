#pragma once

#include <cstdio>
#include <utility>

#include "platform/msi.h"
#include "platform/win32.h"

namespace zqv {

/// Handles that close themselves. An owner holds one handle and closes it when it goes; closing keeps the last error,
/// so that a caller may read it after an owner has gone. The kinds below say what "no handle" is and how to close.

template <typename Kind>
class Owner {
 public:
  using Handle = typename Kind::Handle;

  Owner() = default;
  explicit Owner(Handle handle) : handle_(handle) {}
  Owner(Owner &&other) noexcept : handle_(std::exchange(other.handle_, Kind::None())) {}
  Owner &operator=(Owner &&other) noexcept {
    if (this != &other) {
      Reset(std::exchange(other.handle_, Kind::None()));
    }
    return *this;
  }
  Owner(const Owner &) = delete;
  Owner &operator=(const Owner &) = delete;
  ~Owner() { Reset(); }

  explicit operator bool() const { return handle_ != Kind::None(); }
  Handle Get() const { return handle_; }

  /// The place for a call that gives the handle through a pointer; closes what was held.
  Handle *Out() {
    Reset();
    return &handle_;
  }

  /// Lets go of the handle without closing it.
  Handle Release() { return std::exchange(handle_, Kind::None()); }

  /// Closes now and gives the closing call's own answer, for callers that check it.
  auto Close() { return Kind::Close(Release()); }

  /// Closes what is held, if anything, and holds `handle` instead.
  void Reset(Handle handle = Kind::None()) {
    const Handle old = std::exchange(handle_, handle);
    if (old != Kind::None()) {
      const DWORD error = GetLastError();
      Kind::Close(old);
      SetLastError(error);
    }
  }

 private:
  Handle handle_ = Kind::None();
};

namespace handle_kind {

struct Installer {
  using Handle = MSIHANDLE;
  static Handle None() { return 0; }
  static UINT Close(Handle handle) { return MsiCloseHandle(handle); }
};

struct Kernel {
  using Handle = HANDLE;
  static Handle None() { return nullptr; }
  static BOOL Close(Handle handle) { return CloseHandle(handle); }
};

struct File {
  using Handle = HANDLE;
  static Handle None() { return INVALID_HANDLE_VALUE; }
  static BOOL Close(Handle handle) { return CloseHandle(handle); }
};

struct Search {
  using Handle = HANDLE;
  static Handle None() { return INVALID_HANDLE_VALUE; }
  static BOOL Close(Handle handle) { return FindClose(handle); }
};

struct Key {
  using Handle = HKEY;
  static Handle None() { return nullptr; }
  static LONG Close(Handle handle) { return RegCloseKey(handle); }
};

struct Service {
  using Handle = SC_HANDLE;
  static Handle None() { return nullptr; }
  static BOOL Close(Handle handle) { return CloseServiceHandle(handle); }
};

struct Module {
  using Handle = HMODULE;
  static Handle None() { return nullptr; }
  static BOOL Close(Handle handle) { return FreeLibrary(handle); }
};

struct Stream {
  using Handle = std::FILE *;
  static Handle None() { return nullptr; }
  static int Close(Handle handle) { return std::fclose(handle); }
};

}  // namespace handle_kind

using OwnedInstallerHandle = Owner<handle_kind::Installer>;
using OwnedKernelHandle = Owner<handle_kind::Kernel>;
using OwnedFile = Owner<handle_kind::File>;
using OwnedSearch = Owner<handle_kind::Search>;
using OwnedKey = Owner<handle_kind::Key>;
using OwnedService = Owner<handle_kind::Service>;
using OwnedModule = Owner<handle_kind::Module>;
using OwnedStream = Owner<handle_kind::Stream>;

}  // namespace zqv
