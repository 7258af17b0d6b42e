#pragma once

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "fake/world.h"

/// How the stand-in's calls are written: a body that may end early with the error that the caller shall see. Their
/// headers say that they are C's.

inline constexpr DWORD kGarbageError = 0xDEAD;
inline constexpr int kJunk = 0xDB;

struct Failure {
  DWORD code;
};

inline void Require(bool condition, DWORD code) {
  if (!condition) {
    throw Failure{code};
  }
}

inline World &world = TheWorld();

/// A call that returns its error code, and leaves garbage as the last error whatever happens. Its name is that of the
/// function that it is written in.
template <typename Body>
DWORD CodedCall(Body body, const char *name = __builtin_FUNCTION()) {
  const AtWork atWork;
  try {
    const DWORD code = world.Count(name);
    Require(code == 0, code);
    body();
    return 0;
  } catch (const Failure &failure) {
    return failure.code;
  }
}

/// A call that answers `failed` and sets the last error when it fails; a body without an answer stands for TRUE.
template <typename T, typename Body>
T Call(T failed, Body body, const char *name = __builtin_FUNCTION()) {
  T answer = failed;
  const auto answering = [&] {
    using Answer = decltype(body());
    if constexpr (std::is_void_v<Answer>) {
      body();
      answer = TRUE;
    } else if constexpr (std::is_pointer_v<T> && std::is_integral_v<Answer>) {
      answer = reinterpret_cast<T>(body());
    } else {
      answer = static_cast<T>(body());
    }
  };
  const DWORD code = CodedCall(answering, name);
  world.lastError = code != 0 ? code : world.lastError;
  return answer;
}

/// Copies what fits of `text`, terminates it, and spoils the rest of the buffer.
inline void Fill(char *buffer, std::size_t capacity, std::string_view text) {
  if (capacity > 0) {
    std::memset(buffer, kJunk, capacity);
    buffer[text.copy(buffer, capacity - 1)] = '\0';
  }
}

inline std::string OrEmpty(const char *text) { return text == nullptr ? std::string() : std::string(text); }

/// The text with "x" for each byte of characters that have two, so that signs are found where they stand for
/// themselves.
std::string Signs(std::string_view text);

/// The characters, with lower case for both; 0 for each that is none.
std::u16string Folded(std::string_view text);

/// The entry of that name; there being none is the failure `unknown`.
template <typename Map, typename Key>
auto &Known(Map &map, const Key &key, DWORD unknown) {
  const auto entry = map.find(key);
  Require(entry != map.end(), unknown);
  return entry->second;
}

template <typename Handle>
std::uintptr_t Id(Handle handle) {
  return reinterpret_cast<std::uintptr_t>(handle);
}

/// What the handle stands for, which is of that kind and has been opened with this access.
template <typename Handle>
OpenObject &Opened(Handle handle, const char *kind, DWORD access) {
  OpenObject &object = world.Object(Id(handle), kind);
  world.See(object.name, {object.access});
  Require((object.access & access) == access, ERROR_ACCESS_DENIED);
  return object;
}
