#include <string>

#include "base/yes_no.h"
#include "features/answers/response_property.h"
#include "init/primary/sections.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "services/system/product_key.h"
#include "services/system/registry.h"

namespace zqv {

namespace {

constexpr char kProperty[] = "ZQVHIGHCONTRAST";
constexpr UINT kSettingsSize = 12;             // HIGHCONTRAST of 32-bit Windows
constexpr unsigned kBrightText = 3 * 255 / 2;  // deliberately the half rounded down, and text must be brighter

/// What the product that is installed already was told.
bool AskRegistry() {
  std::string mode;
  if (!ReadRegistryText(HKEY_LOCAL_MACHINE, kCurrentVersionKey, kHighContrastValue, mode)) {
    LogLine("Can't find QV registry high contrast flag");
    return true;
  }
  Log("QV registry high contrast flag is '%s'", mode.c_str());
  return mode.starts_with('0') || SetProperty(kProperty, "1");
}

bool AskAccessibility() {
  LogLine("Checking operating system for high contrast mode");
  HIGHCONTRASTA settings{};
  settings.cbSize = kSettingsSize;
  if (SystemParametersInfoA(SPI_GETHIGHCONTRAST, kSettingsSize, &settings, 0) == FALSE) {
    Log("RC %d from SystemParametersInfo(SPI_GETHIGHCONTRAST)", static_cast<int>(GetLastError()));
    return true;
  }
  if ((settings.dwFlags & HCF_HIGHCONTRASTON) == 0) {
    LogLine("Accessibility high contrast mode is off");
    return true;
  }
  LogLine("Accessibility high contrast mode is on");
  return SetProperty(kProperty, "1");
}

/// A light text colour implies a dark background.
bool AskTextColour() {
  const DWORD colour = GetSysColor(COLOR_WINDOWTEXT);
  const unsigned red = colour & 0xFF;
  const unsigned green = colour >> 8 & 0xFF;
  const unsigned blue = colour >> 16 & 0xFF;
  Log("Text colour is R:%d G:%d B:%d", red, green, blue);
  if (red + green + blue <= kBrightText) {
    return true;
  }
  LogLine("Setting high contrast mode because of text colour");
  return SetProperty(kProperty, "1");
}

}  // namespace

bool PublishHighContrast(Facts &facts) {
  if (!GetPropertyWithResponse("HIGHCONTRAST", facts.highContrast)) {
    return false;
  }
  if (!facts.highContrast.empty()) {
    return SetProperty(kProperty, IsNo(facts.highContrast) ? "0" : "1");
  }
  std::string known;
  if (!AskRegistry() || !GetProperty(kProperty, known)) {
    return false;
  }
  if ((known.empty() && !AskAccessibility()) || !GetProperty(kProperty, known)) {
    return false;
  }
  return !known.empty() || AskTextColour();
}

bool PublishHighContrastChoice(Facts &facts) {
  const std::string &choice = facts.highContrast;
  const char *value = choice.empty() ? "" : IsNo(choice) ? "0" : IsYes(choice) ? "1" : "";
  return SetProperty("ZQVSETHIGHCONTRAST", value);
}

}  // namespace zqv
