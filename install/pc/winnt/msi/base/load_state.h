#pragma once

#include <memory>
#include <new>

namespace zqv {

/// State that lives exactly as long as the library is loaded. The static objects themselves neither construct nor
/// destroy anything, so that nothing runs before the loader's notification or after it. zqviwicn/load.cpp has the list
/// of all: it makes them at load, in that order, and ends them at unload in the opposite one.

/// A state as the list knows it.
class LoadStateEntry {
 public:
  /// Makes the state with its start values. Throws std::bad_alloc, and then there is none.
  void Begin() { begin_(*this); }

  /// Frees it.
  void End() { end_(*this); }

  /// Lets go of modules and of other things that are not memory without freeing them: the process ends, and what is
  /// left of it is no place for calls.
  void Abandon() { abandon_(*this); }

 protected:
  using Step = void (*)(LoadStateEntry &entry);
  constexpr LoadStateEntry(Step begin, Step end, Step abandon) noexcept : begin_(begin), end_(end), abandon_(abandon) {}

 private:
  Step begin_;
  Step end_;
  Step abandon_;
};

/// The same for its owner, who uses it like a pointer. A state that holds more than memory has a member Abandon().
template <typename State>
class LoadState : public LoadStateEntry {
 public:
  constexpr LoadState() noexcept
      : LoadStateEntry([](LoadStateEntry &entry) { new (static_cast<LoadState &>(entry).storage_) State(); },
                       [](LoadStateEntry &entry) { std::destroy_at(static_cast<LoadState &>(entry).Get()); },
                       [](LoadStateEntry &entry) {
                         if constexpr (requires(State state) { state.Abandon(); }) {
                           static_cast<LoadState &>(entry)->Abandon();
                         }
                       }) {}

  State *operator->() { return Get(); }
  State &operator*() { return *Get(); }

 private:
  State *Get() { return std::launder(reinterpret_cast<State *>(storage_)); }

  alignas(State) unsigned char storage_[sizeof(State)]{};
};

}  // namespace zqv
