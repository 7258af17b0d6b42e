#include <array>
#include <string>

#include "base/result_code.h"
#include "base/text.h"
#include "init/primary/sections.h"
#include "platform/owner.h"
#include "runtime/installer_result.h"
#include "runtime/log.h"
#include "runtime/message.h"
#include "runtime/property.h"
#include "runtime/session.h"
#include "runtime/table_query.h"

namespace zqv {

namespace {

/// A language of the system: its Windows identifiers, up to the first 0. For a language without a message library of
/// its own the letter is that of English.
struct SystemLanguage {
  std::array<int, 20> identifiers;
  const char *code;
  char letter;
};
constexpr SystemLanguage kSystemLanguages[] = {
    {{0x0404}, "zh_TW", 't'},
    {{0x0804, 0x0C04, 0x1004}, "zh_CN", 'z'},
    {{0x0407, 0x0807, 0x0C07, 0x1007, 0x1407}, "de_DE", 'g'},
    {{0x040A, 0x080A, 0x0C0A, 0x100A, 0x140A, 0x180A, 0x1C0A, 0x200A, 0x240A, 0x280A,
      0x2C0A, 0x300A, 0x340A, 0x380A, 0x3C0A, 0x400A, 0x440A, 0x480A, 0x4C0A, 0x500A},
     "es_ES",
     's'},
    {{0x040C, 0x080C, 0x0C0C, 0x100C, 0x140C, 0x180C}, "fr_FR", 'f'},
    {{0x0410, 0x0810}, "it_IT", 'i'},
    {{0x0411}, "ja_JP", 'j'},
    {{0x0412, 0x0812}, "ko_KR", 'k'},
    {{0x0416}, "pt_BR", 'b'},
    {{0x0419}, "ru_RU", 'r'},
    {{0x040E}, "hu_HU", 'h'},
    {{0x0406}, "da_DK", 'a'},
    {{0x040B}, "fi_FI", 'a'},
    {{0x0413, 0x0813}, "nl_NL", 'a'},
    {{0x0414, 0x0814}, "no_NO", 'a'},
    {{0x0415}, "pl_PL", 'a'},
    {{0x041D, 0x081D}, "sv_SE", 'a'},
};
constexpr SystemLanguage kOtherLanguage = {{}, "en_US", 'a'};

/// A language of the installation: there is a message library for each.
struct InstallationLanguage {
  char letter;
  const char *name;
};
constexpr InstallationLanguage kInstallationLanguages[] = {
    {'t', "Traditional Chinese"},
    {'z', "Simplified Chinese"},
    {'g', "German"},
    {'s', "Spanish"},
    {'f', "French"},
    {'i', "Italian"},
    {'j', "Japanese"},
    {'k', "Korean"},
    {'b', "Portuguese"},
    {'a', "English"},
    {'h', "Hungarian"},
    {'r', "Russian"},
};

constexpr char kLanguageKey[] = "ZQV__setup_language";
constexpr char kQuery[] = "SELECT * FROM UIText";
constexpr UINT kKeyField = 1;
constexpr UINT kTextField = 2;

const SystemLanguage &SystemLanguageOf(int identifier) {
  for (const SystemLanguage &language : kSystemLanguages) {
    for (const int own : language.identifiers) {
      if (own == identifier && own != 0) {
        return language;
      }
    }
  }
  return kOtherLanguage;
}

const InstallationLanguage *InstallationLanguageOf(char letter) {
  for (const InstallationLanguage &language : kInstallationLanguages) {
    if (language.letter == letter) {
      return &language;
    }
  }
  return nullptr;
}

bool Succeeded(const char *call, ResultCode code) {
  if (code != ERROR_SUCCESS) {
    Log("%s error %d. Query '%s'", call, static_cast<int>(code), kQuery);
  }
  return code == ERROR_SUCCESS;
}

/// A text of the UIText table.
struct UiText {
  bool found = false;
  std::string text;
};

/// Fetches rows up to the one of the key. False when a call fails.
bool FetchUiText(MSIHANDLE view, UiText &uiText) {
  for (const char *fetch = "MsiViewFetch(1)";; fetch = "MsiViewFetch(2)") {
    OwnedInstallerHandle row;
    const ResultCode code = MsiViewFetch(view, row.Out());
    if (code == ERROR_NO_MORE_ITEMS) {
      return true;
    }
    std::string key;
    if (!Succeeded(fetch, code) || !Succeeded("MsiRecordGetString(1)", ReadRecordText(row.Get(), kKeyField, key))) {
      return false;
    }
    if (key == kLanguageKey) {
      uiText.found = true;
      return Succeeded("MsiRecordGetString(2)", ReadRecordText(row.Get(), kTextField, uiText.text));
    }
  }
}

bool ReadUiText(UiText &uiText) {
  const OwnedInstallerHandle database(MsiGetActiveDatabase(Session().handle));
  if (!database) {
    LogLine("***MsiGetActiveDatabase() failed");
    return false;
  }
  OwnedInstallerHandle view;
  if (!Succeeded("MsiDatabaseOpenView()", MsiDatabaseOpenViewA(database.Get(), kQuery, view.Out()))) {
    return false;
  }
  const bool read = Succeeded("MsiViewExecute()", MsiViewExecute(view.Get(), 0)) && FetchUiText(view.Get(), uiText);
  ResultCode ignored = ERROR_SUCCESS;
  iwiCheckMsiResult("MsiViewClose", kQuery, MsiViewClose(view.Get()), ignored);
  return read;
}

}  // namespace

bool PublishSystemLanguage(Facts &facts) {
  std::string identifier;
  if (!GetProperty("SystemLanguageID", identifier)) {
    return false;
  }
  const SystemLanguage &language = SystemLanguageOf(DecimalValue(identifier));
  facts.systemLetter = language.letter;
  return SetProperties({{"ZQVSYSTEMLANGUAGECODE", language.code}, {"ZQVLANGUAGELIC", language.code}});
}

bool FindInstallationLanguage(Facts &facts) {
  UiText uiText;
  if (!ReadUiText(uiText)) {
    return false;
  }
  if (uiText.found) {
    Log("UI text key '%s': '%s'", kLanguageKey, uiText.text.c_str());
  }
  std::string value = LowerCase(uiText.text);
  if (facts.testRun) {
    value = "a";
    facts.transformFound = true;
  } else if (!value.empty()) {
    facts.transformFound = true;
  } else {
    if (uiText.found) {
      LogLine("***No UI language transform found.");
    } else {
      Log("***Can't find key '%s' in UIText table. No UI language transform.", kLanguageKey);
    }
    value = facts.systemLetter;
  }
  const InstallationLanguage *language = InstallationLanguageOf(value.front());
  if (language == nullptr) {
    Log("Unknown language code '%s'; using English", value.c_str());
    language = InstallationLanguageOf(kOtherLanguage.letter);
  }
  facts.letter = language->letter;
  facts.language = language->name;
  return true;
}

bool PublishInstallationLanguage(Facts &facts) {
  const char letter[] = {facts.letter, '\0'};
  return SetProperties({{"ZQVLANGUAGECODE", letter}, {"ZQVLANGUAGE", facts.language}});
}

bool RequireLanguageTransform(Facts &facts) {
  if (facts.transformFound) {
    return true;
  }
  iiiDisplayMsgBox(
      NlsText(message::kNoLanguage, "No installation language specified. Use the TRANSFORMS property. (ZQV4732)"),
      MB_ICONERROR);
  return false;
}

}  // namespace zqv
