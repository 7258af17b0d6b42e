#include "base/code_page.h"

#include <algorithm>
#include <string>

#include "base/text.h"
#include "platform/win32.h"

namespace zqv {

namespace {

using WideText = std::basic_string<WCHAR>;

/// The language hardly matters, but must be one that each system has.
constexpr LCID kEnglish = 0x0409;

/// Added to a byte that is no character it gives half of a surrogate pair, and no conversion gives one alone.
constexpr WCHAR kNoCharacter = 0xDC00;

bool IsAscii(char c) { return static_cast<unsigned char>(c) < 0x80; }

bool IsAsciiText(std::string_view text) { return std::all_of(text.begin(), text.end(), IsAscii); }

/// Adds the text in UTF-16; false, and nothing is added, when a part of it is no character.
bool Widen(std::string_view text, WideText &wide) {
  const int length = static_cast<int>(text.size());
  WideText added(text.size(), 0);  // no code page needs more units than bytes
  const int units = MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, text.data(), length, added.data(), length);
  wide.append(added, 0, static_cast<std::size_t>(units));
  return units != 0;
}

}  // namespace

std::size_t CharacterLength(std::string_view text, std::size_t at) {
  // No code page has a first half in ASCII.
  const bool isFirstHalf = !IsAscii(text[at]) && IsDBCSLeadByte(static_cast<BYTE>(text[at])) != FALSE;
  return isFirstHalf && at + 1 < text.size() ? 2 : 1;
}

std::size_t FindCharacter(std::string_view text, char c, std::size_t from) {
  while (from < text.size() && text[from] != c) {
    from += CharacterLength(text, from);
  }
  return from < text.size() ? from : std::string_view::npos;
}

std::basic_string<WCHAR> NameKey(std::string_view name) {
  WideText wide;
  if (!Widen(name, wide)) {
    for (std::size_t at = 0; at < name.size(); at += CharacterLength(name, at)) {
      const std::string_view character = name.substr(at, CharacterLength(name, at));
      if (!Widen(character, wide)) {
        std::transform(character.begin(), character.end(), std::back_inserter(wide),
                       [](char byte) { return static_cast<WCHAR>(kNoCharacter | static_cast<unsigned char>(byte)); });
      }
    }
  }
  const int length = static_cast<int>(wide.size());
  LCMapStringW(kEnglish, LCMAP_UPPERCASE, wide.data(), length, wide.data(), length);
  return wide;
}

bool EqualName(std::string_view a, std::string_view b) {
  // Most names are so, and are compared often.
  if (IsAsciiText(a) && IsAsciiText(b)) {
    return EqualNoCase(a, b);
  }
  return NameKey(a) == NameKey(b);
}

bool StartsWithName(std::string_view text, std::string_view prefix) {
  return EqualName(text.substr(0, prefix.size()), prefix);
}

}  // namespace zqv
