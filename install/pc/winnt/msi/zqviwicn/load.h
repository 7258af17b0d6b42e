#pragma once

namespace zqv {

/// Makes the state that lives as long as the library is loaded. False, with none of it, when there is no memory for it.
bool Load() noexcept;

/// Frees it, as far as Load has made it.
void Unload() noexcept;

/// The same at the end of the process, when no other library may be called any more: memory is freed, and nothing else.
void UnloadAtProcessEnd() noexcept;

}  // namespace zqv
