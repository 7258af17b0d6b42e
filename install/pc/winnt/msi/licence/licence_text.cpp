#include "licence/licence_text.h"

#include <algorithm>
#include <array>

#include "base/folder_rule.h"
#include "licence/licence_folder.h"
#include "platform/msi.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "runtime/session.h"
#include "side/readable_file.h"
#include "side/source.h"

namespace zqv {

namespace {

constexpr char kText[] = "ZQVLICENSETEXT";
constexpr char kLanguage[] = "ZQVLANGUAGELIC";
constexpr char kEnglish[] = "en_US";

/// The bytes, as ranges, that begin a character of two bytes in a language's code page; an empty range begins none.
struct CodePage {
  std::string_view language;
  std::array<unsigned char, 2> first;
  std::array<unsigned char, 2> second;
};
constexpr CodePage kDoubleByteCodePages[] = {
    {"ja_JP", {0x81, 0x9F}, {0xE0, 0xFC}},  // 932
    {"ko_KR", {0x81, 0xFE}, {0xFF, 0x00}},  // 949
    {"zh_CN", {0x81, 0xFE}, {0xFF, 0x00}},  // 936
    {"zh_TW", {0x81, 0xFE}, {0xFF, 0x00}},  // 950
};

bool IsIn(unsigned char byte, const std::array<unsigned char, 2> &range) {
  return byte >= range[0] && byte <= range[1];
}

/// Reads the licence in a language. False, with a line, when there is no such file or it cannot be read.
bool ReadText(const std::string &folder, const std::string &language, std::string &text, std::string &path) {
  if (!IsFileName(language)) {
    Log("***'%s' in '%s' is no language", language.c_str(), kLanguage);
    return false;
  }
  path = folder + language + ".txt";
  OwnedStream file;
  if (!OpenIfThere(path, file)) {
    return false;
  }
  if (!file) {
    Log("No licence '%s'", path.c_str());
    return false;
  }
  text.resize(kLicenceTextLength + 1);  // tells whether there is more
  text.resize(std::fread(text.data(), 1, text.size(), file.Get()));
  if (std::ferror(file.Get()) != 0) {
    Log("***Can't read '%s'", path.c_str());
    return false;
  }
  text.resize(std::min(text.find('\0'), text.size()));
  text.resize(LengthCutTo(text, language, kLicenceTextLength));
  return true;
}

/// A licence is no log line: only its length is told.
ResultCode Publish(const std::string &text, const std::string &path) {
  const ResultCode code = MsiSetPropertyA(Session().handle, kText, text.c_str());
  if (code != ERROR_SUCCESS) {
    Log("***msiSetProperty('%s') value of %d bytes failed (%d)", kText, static_cast<int>(text.size()), code);
    return ERROR_INSTALL_FAILURE;
  }
  Log("Property '%s' set to %d bytes of '%s'", kText, static_cast<int>(text.size()), path.c_str());
  return ERROR_SUCCESS;
}

}  // namespace

std::size_t LengthCutTo(std::string_view text, std::string_view language, std::size_t most) {
  if (text.size() <= most) {
    return text.size();
  }
  for (const CodePage &page : kDoubleByteCodePages) {
    if (page.language == language) {
      std::size_t at = 0;
      while (at < most) {
        const auto byte = static_cast<unsigned char>(text[at]);
        const std::size_t length = IsIn(byte, page.first) || IsIn(byte, page.second) ? 2 : 1;
        if (at + length > most) {
          break;
        }
        at += length;
      }
      return at;
    }
  }
  return most;
}

ResultCode PublishLicenceText() {
  std::string source;
  std::string folder;
  std::string language;
  if (!FindSource(source) || !AskLicenceFolder(folder) || !GetTrimmedProperty(kLanguage, language)) {
    return ERROR_INSTALL_FAILURE;
  }
  source += folder + "\\";
  std::string text;
  std::string path;
  if (ReadText(source, language, text, path) || (language != kEnglish && ReadText(source, kEnglish, text, path))) {
    return Publish(text, path);
  }
  LogLine("No text of the licence to show");
  return ResultOf(SetProperty(kText, ""));
}

}  // namespace zqv
