#include "services/tables/products.h"

#include <string>
#include <string_view>

#include "base/text.h"
#include "init/primary/sections.h"
#include "platform/msi.h"
#include "runtime/log.h"
#include "runtime/message.h"
#include "runtime/property.h"

namespace zqv {

namespace {

constexpr DWORD kProductCodeLength = 39;

/// A package that the library belongs to.
struct OwnPackage {
  const char *upgradeCode;
  const char *product;
  const char *displayWord;  ///< null: its installed products are not looked at
};
constexpr OwnPackage kOwnPackages[] = {
    {"{8D1C5EA1-A4C5-4967-97FA-77FE6D4B5EA7}", "server", "Server"},
    {"{5A8B5D80-6DCC-4317-9922-99EC0093BF24}", "client", "Client"},
    {"{62F00881-AC47-458F-BF38-2B84B38DBA50}", "test", nullptr},
};

struct ProductState {
  INSTALLSTATE state;
  const char *name;
  bool wrong;  ///< no state that a product should be in
};
constexpr ProductState kProductStates[] = {
    {INSTALLSTATE_ABSENT, "INSTALLSTATE_ABSENT", false},
    {INSTALLSTATE_DEFAULT, "INSTALLSTATE_DEFAULT", false},
    {INSTALLSTATE_ADVERTISED, "INSTALLSTATE_ADVERTISED", false},
    {INSTALLSTATE_UNKNOWN, "INSTALLSTATE_UNKNOWN", false},
    {INSTALLSTATE_BADCONFIG, "INSTALLSTATE_BADCONFIG", true},
    {INSTALLSTATE_INVALIDARG, "INSTALLSTATE_INVALIDARG", true},
};

void LogProductState(const char *product, const char *displayWord) {
  const INSTALLSTATE state = MsiQueryProductStateA(product);
  for (const ProductState &known : kProductStates) {
    if (known.state == state) {
      Log("%sProduct %s (%s) state is %s", known.wrong ? "***" : "", product, displayWord, known.name);
      return;
    }
  }
  Log("***Product %s (%s) state is %8.8lx", product, displayWord,
      static_cast<unsigned long>(static_cast<DWORD>(state)));
}

/// A field of a version as the properties show it: from its first digit on that is not 0; "0" when there is none.
std::string WithoutLeadingZeros(std::string_view field) {
  const std::string_view trimmed = StripBlanks(field);
  const std::size_t first = trimmed.find_first_of("123456789");
  return first == std::string_view::npos ? "0" : std::string(trimmed.substr(first));
}

struct Title {
  UINT message;
  const char *fallback;
};
constexpr Title kPatchTitle{message::kPatchTitle, "Vantrel QV V%s Patch Setup"};
constexpr Title kClientTitle{message::kClientTitle, "Vantrel QV V%s Client Setup"};
constexpr Title kBetaTitle{message::kBetaTitle, "Vantrel QV V%s Setup"};
constexpr Title kTrialTitle{message::kTrialTitle, "Vantrel QV V%s Setup"};
constexpr Title kSetupTitle{message::kSetupTitle, "Vantrel QV V%s Setup"};

bool ChooseTitle(Facts &facts, Title &title) {
  std::string patch;
  if (!GetProperty("PATCH", patch)) {
    return false;
  }
  if (!patch.empty()) {
    title = kPatchTitle;
    return true;
  }
  bool clientOnly = false;
  if (!AskClientOnly(facts, clientOnly)) {
    return false;
  }
  title = clientOnly                     ? kClientTitle
          : facts.licenceType == "beta"  ? kBetaTitle
          : facts.licenceType == "trial" ? kTrialTitle
                                         : kSetupTitle;
  return true;
}

}  // namespace

bool IdentifyProduct(Facts &facts) {
  for (const OwnPackage &package : kOwnPackages) {
    bool isOwn = false;
    if (!iwiIsOwnUpgradeCode(package.upgradeCode, isOwn)) {
      return false;
    }
    if (!isOwn) {
      continue;
    }
    facts.testRun = std::string_view(package.product) == "test";
    if (facts.testRun) {
      LogLine("TEST EXECUTION");
    }
    return SetProperty("ZQVPRODUCT", package.product);
  }
  LogLine("***Unknown product");
  return SetProperty("ZQVPRODUCT", "");
}

bool LogRelatedProducts(Facts & /*facts*/) {
  std::string installed;  // for the log only
  if (!GetProperty("Installed", installed)) {
    return false;
  }
  for (const OwnPackage &package : kOwnPackages) {
    if (package.displayWord == nullptr) {
      continue;
    }
    char product[kProductCodeLength];
    for (DWORD index = 0; MsiEnumRelatedProductsA(package.upgradeCode, 0, index, product) == ERROR_SUCCESS; ++index) {
      LogProductState(product, package.displayWord);
    }
  }
  return true;
}

bool PublishVersion(Facts &facts) {
  std::string text;
  if (!GetProperty("ProductVersion", text)) {
    return false;
  }
  const std::string_view whole = text;
  const std::size_t dot = whole.find('.');
  const std::string_view rest = dot == std::string_view::npos ? std::string_view() : whole.substr(dot + 1);
  facts.version = WithoutLeadingZeros(whole.substr(0, dot));
  facts.release = WithoutLeadingZeros(rest.substr(0, rest.find('.')));
  return SetProperties({{"ZQVVERSION", facts.version.c_str()}, {"ZQVRELEASE", facts.release.c_str()}});
}

bool PublishSetupTitle(Facts &facts) {
  Title title{};
  if (!ChooseTitle(facts, title)) {
    return false;
  }
  const std::string format = NlsText(title.message, title.fallback);
  return SetProperty("ZQVSETUPTITLE", FillInsert(format, "%s", facts.version + "." + facts.release));
}

bool PublishDiskFolderName(Facts &facts) {
  if (!SetProperty("ZQVDISKFOLDERNAME", iwiGetProductData(2, nullptr))) {
    return false;
  }
  return !facts.administrative || SetProperty("LAUNCHWIZ", "0");
}

bool PublishDisplayNames(Facts &facts) {
  bool clientOnly = false;
  if (!AskClientOnly(facts, clientOnly)) {
    return false;
  }
  if (!clientOnly && (!SetProperty("ZQVSNAPSERVICES", NlsText(message::kSnapInServices)) ||
                      !SetProperty("ZQVSNAPEXPLORER", NlsText(message::kSnapInExplorer)))) {
    return false;
  }
  return facts.administrative || SetProperty("ZQVSTARTFOLDER", NlsText(message::kStartFolder));
}

}  // namespace zqv
