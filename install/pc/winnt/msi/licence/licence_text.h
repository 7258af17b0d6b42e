#pragma once

#include <string>
#include <string_view>

#include "base/result_code.h"

namespace zqv {

/// The most of a licence's text that is published, in bytes.
inline constexpr std::size_t kLicenceTextLength = 32000;

/// iwiCopyLicenseText: publishes the licence in the language of ZQVLANGUAGELIC as ZQVLICENSETEXT: the file of that name
/// and ".txt" in the folder ZQVLICENSEPATH of the source, or else the English one. Its bytes stay as they are, in the
/// code page of that language, up to the first zero, kLicenceTextLength of them at the most. With neither file the
/// property is empty, which is told. Returns ERROR_SUCCESS, or ERROR_INSTALL_FAILURE when a property cannot be read or
/// set.
ResultCode PublishLicenceText();

/// How much of a text in that language may stay when it is cut to `most` bytes: no character of two bytes is cut apart.
std::size_t LengthCutTo(std::string_view text, std::string_view language, std::size_t most);

}  // namespace zqv
