#include <algorithm>
#include <string>
#include <string_view>

#include "base/text.h"
#include "base/vrmf.h"
#include "init/primary/registry_service_level.h"
#include "init/primary/sections.h"
#include "runtime/log.h"
#include "runtime/message.h"
#include "runtime/property.h"
#include "services/system/product_key.h"

namespace zqv {

namespace {

constexpr char kShipLevel[] = "ZQVSERVICESHIPLEVEL";

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool IsWord(std::string_view text) { return !text.empty() && std::all_of(text.begin(), text.end(), IsLetter); }

/// Trimmed; a number without its leading zeros.
std::string Normalised(std::string_view part) {
  part = StripBlanks(part);
  return std::string(IsNumber(part) ? StripLeadingZeros(part) : part);
}

}  // namespace

bool LogInstalledServiceLevel(Facts & /*facts*/) {
  // The reading leaves the lines, one of a failure too; the installation can go on without it.
  ServiceLevel level;
  static_cast<void>(ReadRegistryServiceLevel(kProductKey, level));
  return true;
}

bool PublishServiceLevel(Facts &facts) {
  std::string level;
  if (!GetProperty(kShipLevel, level)) {
    return false;
  }
  const std::string_view whole = level.empty() ? std::string_view("00.00") : level;
  const std::size_t dot = whole.find('.');
  const std::string_view rest = dot == std::string_view::npos ? std::string_view() : whole.substr(dot + 1);
  if (rest.find('.') != std::string_view::npos) {
    // Deliberate: it names the property and not its value.
    Log("***Invalid Modification.Fix Level '%s'", kShipLevel);
    return false;
  }
  const std::string modification = Normalised(whole.substr(0, dot));
  const std::string fix = Normalised(rest);
  if (!IsNumber(modification) && !IsWord(modification)) {
    Log("***Modification Level '%s' must be all numeric or all alphabetic", modification.c_str());
    return false;
  }
  if (!IsNumber(fix)) {
    Log("***Fix Level '%s' must be numeric", fix.c_str());
    return false;
  }
  const std::string published = modification + "." + fix;
  const std::string vrmf = facts.version + "." + facts.release + "." + published;
  return SetProperties({{kShipLevel, published.c_str()}, {"ZQVVRMF", vrmf.c_str()}});
}

bool PublishServiceLevelMessage(Facts & /*facts*/) {
  return SetProperty("ZQVSERVICELEVELMESSAGE", NlsText(message::kServiceLevel));
}

}  // namespace zqv
