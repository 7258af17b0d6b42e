#pragma once

#include <string>

#include "base/load_state.h"

namespace zqv {

/// Response files: the answers of an unattended installation, as stanzas of keyword lines in a text file.
///
///     ; a comment, as is a line that begins with #
///     [Response]
///     PGMFOLDER="C:\Program Files\Korvex\Vantrel QV"
///     /q
///
/// A keyword ends at the first "="; its value is stripped of blanks and of enclosing double quotes, and %NAME% in it is
/// expanded from the environment. A switch such as /q or -q gives the keyword "-q" and the rest of the line as its
/// value. A line has at most 515 characters; a longer one counts as several.

extern LoadStateEntry &responseFileState;

/// Loads a response file, once per load: when stanzas are loaded already nothing is done, and the answer is true. True
/// when every line was good. Otherwise false: each bad line is logged and dropped, and the good ones are loaded; a file
/// that cannot be opened is logged and leaves nothing loaded.
[[nodiscard]] bool iwiReadResponseFile(const std::string &path);

/// Looks a keyword up in the last stanza of the given name, which is compared without regard to case; the last line of
/// the keyword counts. `exactCase` says whether the keyword's case matters. False, with `value` empty, when it is not
/// there.
[[nodiscard]] bool iwiGetResponseValue(bool exactCase, const std::string &stanza, const std::string &keyword,
                                       std::string &value);

}  // namespace zqv
