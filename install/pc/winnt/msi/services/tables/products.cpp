#include "services/tables/products.h"

#include <string_view>

#include "base/text.h"
#include "platform/msi.h"
#include "runtime/log.h"
#include "runtime/property.h"

namespace zqv {

namespace {

constexpr DWORD kProductCodeLength = 39;
constexpr DWORD kProductNameLength = 515;

struct ProductData {
  const char *upgradeCode;
  const char *versionPrefix;
  const char *type2Name;
  const char *type3Name;
};
constexpr ProductData kProductData[] = {
    {"{8D1C5EA1-A4C5-4967-97FA-77FE6D4B5EA7}", "0.0", "Vantrel QV", "Vantrel QV"},
    {"{5A8B5D80-6DCC-4317-9922-99EC0093BF24}", "0.0", "Vantrel QV", "Vantrel QV Client"},
    {"{F6AEC289-3597-4BA4-AEC1-C10A07FE6923}", "0.0", "Vantrel QV", "Vantrel QV XA Client"},
    {"{78156E97-B71F-491E-A6F4-44CB3C838860}", "6.0", "Vantrel QV Info", "Vantrel QV Info"},
    {"{D4CF8FDC-BD09-4FF4-8964-56BC7D912D8C}", "3.0", "Eclipse SDK", "Eclipse SDK"},
};

/// The package's identity; empty until read.
struct State {
  std::string upgradeCode;
  std::string version;
};
constinit LoadState<State> state;

bool Fill(const char *name, std::string &kept) { return !kept.empty() || GetProperty(name, kept); }

const char *NameOf(const ProductData &entry, int type) {
  return type == 2 ? entry.type2Name : type == 3 ? entry.type3Name : "";
}

}  // namespace

constinit LoadStateEntry &productState = state;

void iwiFindRelatedProduct(const std::string &upgradeCode, std::string &product) {
  Log("Searching for upgrade code '%s'", upgradeCode.c_str());
  product.clear();
  char code[kProductCodeLength];
  for (DWORD index = 0; MsiEnumRelatedProductsA(upgradeCode.c_str(), 0, index, code) == ERROR_SUCCESS; ++index) {
    Log("Found product '%s'", code);
    char name[kProductNameLength];
    DWORD length = kProductNameLength;
    if (MsiGetProductInfoA(code, "InstalledProductName", name, &length) == ERROR_SUCCESS) {
      Log(" - '%s' is installed", name);
      product = code;
      return;
    }
  }
  Log(" - Not installed");
}

std::string iwiGetProductData(int type, const char *version) {
  std::string answer = "static data error";
  const char *shownVersion = "Unknown";
  for (const ProductData &entry : kProductData) {
    bool isOwn = false;
    if (!iwiIsOwnUpgradeCode(entry.upgradeCode, isOwn) || !isOwn) {
      continue;
    }
    shownVersion = entry.versionPrefix;
    if (version == nullptr || std::string_view(version).starts_with(entry.versionPrefix)) {
      answer = NameOf(entry, type);
    }
  }
  Log("Type %d product data is '%s' (version '%s')", type, answer.c_str(), shownVersion);
  return answer;
}

bool iwiIsOwnUpgradeCode(const std::string &upgradeCode, bool &isOwn) {
  isOwn = false;
  if (!Fill("UpgradeCode", state->upgradeCode) || !Fill("ProductVersion", state->version)) {
    return false;
  }
  isOwn = EqualNoCase(upgradeCode, state->upgradeCode);
  return true;
}

}  // namespace zqv
