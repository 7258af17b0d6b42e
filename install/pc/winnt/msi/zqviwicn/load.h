#pragma once

namespace zqv {

/// Makes the state that lives as long as the library is loaded.
void Load();

/// Frees it.
void Unload();

}  // namespace zqv
