#pragma once

#include <new>
#include <utility>

namespace zqv {

/// State that lives exactly as long as the library is loaded. The static object itself neither constructs nor destroys
/// anything, so that nothing runs before the loader's notification or after it: Begin() makes the state at load, End()
/// frees it at unload. Between the two it is used like a pointer.
template <typename State>
class LoadState {
 public:
  void Begin() { new (storage_) State(); }
  void End() { std::destroy_at(Get()); }

  State *operator->() { return Get(); }
  State &operator*() { return *Get(); }

 private:
  State *Get() { return std::launder(reinterpret_cast<State *>(storage_)); }

  alignas(State) unsigned char storage_[sizeof(State)];
};

}  // namespace zqv
