#include "fake/call.h"

// The ANSI code page. None of these calls can fail for a text, so none is counted.

namespace {

bool IsIn(char16_t c, char16_t first, char16_t last) { return c >= first && c <= last; }

bool IsFirstHalf(BYTE byte) {
  const bool japanese = IsIn(byte, 0x81, 0x9F) || IsIn(byte, 0xE0, 0xFC);
  return World::codePage == 932 ? japanese : World::codePage != 1252 && IsIn(byte, 0x81, 0xFE);
}

/// Moves past a character; 0 for what is none. A character of two bytes has no case, and so may be any that has none.
char16_t Next(std::string_view &text) {
  const auto first = static_cast<BYTE>(text[0]);
  if (first < 0x80) {  // by far the most, and the same in every code page
    text.remove_prefix(1);
    return first;
  }
  const bool isDouble = IsFirstHalf(first) && text.size() > 1;
  const auto second = static_cast<BYTE>(isDouble ? text[1] : 0);
  text.remove_prefix(isDouble ? 2 : 1);
  if (isDouble) {
    return static_cast<char16_t>(second < 0x40 ? 0 : 0x3400 + (first - 0x81) * 0x100 + second);
  }
  const std::string_view undefined = World::codePage == 1252 ? "\x81\x8D\x8F\x90\x9D" : "\x80\xA0\xFD\xFE\xFF";
  return IsFirstHalf(first) || undefined.find(static_cast<char>(first)) != std::string_view::npos ? 0 : first;
}

bool IsUpper(char16_t c) { return IsIn(c, 'A', 'Z') || (IsIn(c, 0xC0, 0xDE) && c != 0xD7); }

char16_t NextFolded(std::string_view &text) {
  const char16_t c = Next(text);
  return static_cast<char16_t>(IsUpper(c) ? c + 0x20 : c);
}

}  // namespace

bool IgnoreCase::operator()(std::string_view a, std::string_view b) const {
  while (!a.empty() && !b.empty()) {
    const char16_t x = NextFolded(a), y = NextFolded(b);
    if (x != y) {
      return x < y;
    }
  }
  return a.empty() && !b.empty();
}

std::string Signs(std::string_view text) {
  std::string signs;
  while (!text.empty()) {
    const std::string_view rest = text;
    Next(text);
    const std::size_t length = rest.size() - text.size();
    signs += length == 1 ? rest.substr(0, 1) : "xx";
  }
  return signs;
}

std::u16string Folded(std::string_view text) {
  std::u16string folded;
  while (!text.empty()) {
    folded += NextFolded(text);
  }
  return folded;
}

BOOL IsDBCSLeadByte(BYTE byte) { return IsFirstHalf(byte) ? TRUE : FALSE; }

int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR text, int length, WCHAR *buffer, int capacity) {
  std::u16string wide;
  for (std::string_view rest(text, static_cast<std::size_t>(length)); !rest.empty();) {
    wide += Next(rest);
  }
  world.lastError = kGarbageError;
  if (flags == 0) {
    std::replace(wide.begin(), wide.end(), u'\0', u'?');
  }
  if (codePage != CP_ACP || (flags & ~MB_ERR_INVALID_CHARS) != 0 || wide.find(u'\0') != std::u16string::npos ||
      wide.size() > static_cast<std::size_t>(capacity)) {
    return 0;
  }
  return static_cast<int>(wide.copy(buffer, wide.size()));
}

int LCMapStringW(LCID, DWORD flags, const WCHAR *text, int length, WCHAR *buffer, int capacity) {
  if (flags != LCMAP_UPPERCASE || length > capacity) {
    return 0;
  }
  std::transform(text, text + length, buffer, [](WCHAR c) {
    const auto upper = static_cast<WCHAR>(c - 0x20);
    return IsUpper(upper) ? upper : c;
  });
  return length;
}
