#pragma once

#include <string>
#include <string_view>

#include "platform/win32.h"

namespace zqv {

/// Texts in the system's ANSI code page. In those of Japanese, Korean and Chinese a character may have two bytes, and
/// the second one may be any from 0x40 on: a backslash's, a bar's or a letter's. Blanks, quotes, dots, slashes, colons
/// and the other signs below 0x40 are never a second half, so those are looked for byte by byte everywhere.

/// How many bytes the character has that begins at `at`, an index into the text: 1 or 2. A first half without a second
/// one counts as a character.
std::size_t CharacterLength(std::string_view text, std::size_t at);

/// Where the character `c`, one of ASCII, stands next in the text, from `from` on, where a character must begin; npos
/// when there is none.
std::size_t FindCharacter(std::string_view text, char c, std::size_t from = 0);

/// Compares names, and paths, as the file system does: in UTF-16, unit by unit, upper case standing for both cases. No
/// sort order takes part, and no language: LCMapString with LCMAP_UPPERCASE and without LCMAP_LINGUISTIC_CASING "uses
/// file system rules for casing", as its documentation has it, on all systems since Windows 2000. Bytes that are no
/// character are equal to themselves only.
bool EqualName(std::string_view a, std::string_view b);

/// What all names have in common that EqualName takes for one, for containers of names.
std::basic_string<WCHAR> NameKey(std::string_view name);

/// Compares the first bytes of `text` with a name, as many as `prefix` has, in the same way.
bool StartsWithName(std::string_view text, std::string_view prefix);

}  // namespace zqv
