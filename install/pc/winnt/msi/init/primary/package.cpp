#include <array>
#include <string>
#include <string_view>

#include "base/result_code.h"
#include "base/text.h"
#include "build_stamp.h"
#include "init/primary/sections.h"
#include "platform/owner.h"
#include "runtime/installer_result.h"
#include "runtime/log.h"
#include "runtime/message.h"
#include "runtime/property.h"
#include "runtime/session.h"
#include "runtime/temp_name.h"
#include "services/tables/binary_stream.h"

namespace zqv {

namespace {

// Properties and types of the summary information (Windows Installer, "Summary Property Descriptions").
constexpr UINT kRevisionNumber = 9;
constexpr UINT kCreateTime = 12;
constexpr UINT kTextType = 30;
constexpr UINT kTimeType = 64;

constexpr char kDateProperty[] = "ZQVBUILDDATE";

constexpr const char *kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

/// The revision of the library's source: the third-last word of its identification. Empty when that has fewer than
/// three blanks.
std::string SourceRevision() {
  std::string_view rest = kIdentification;
  std::string_view cut;
  for (int blanks = 0; blanks < 3; ++blanks) {
    const std::size_t at = rest.rfind(' ');
    if (at == std::string_view::npos) {
      return {};
    }
    cut = rest.substr(at + 1);
    rest = rest.substr(0, at);
  }
  return std::string(cut);
}

std::string WithRevision(const std::string &stamp) {
  const std::string revision = SourceRevision();
  return revision.empty() ? stamp : stamp + "; version " + revision;
}

/// One property of the summary information.
struct SummaryValue {
  UINT type = 0;  ///< stays 0 when it cannot be read
  FILETIME time{};
  std::array<char, kPropertyLength> text{};
};

SummaryValue ReadSummary(MSIHANDLE summary, UINT property) {
  SummaryValue value;
  UINT type = 0;
  int number = 0;
  auto length = static_cast<DWORD>(value.text.size());
  ResultCode ignored = ERROR_SUCCESS;
  const ResultCode code =
      MsiSummaryInfoGetPropertyA(summary, property, &type, &number, &value.time, value.text.data(), &length);
  if (iwiCheckMsiResult("MsiSummaryInfoGetProperty", std::to_string(property).c_str(), code, ignored) ==
      ERROR_SUCCESS) {
    value.type = type;
  }
  return value;
}

OwnedInstallerHandle OpenSummary() {
  OwnedInstallerHandle summary;
  const OwnedInstallerHandle database(MsiGetActiveDatabase(Session().handle));
  if (!database) {
    LogLine("***MsiGetActiveDatabase() failed");
  } else {
    ResultCode ignored = ERROR_SUCCESS;
    iwiCheckMsiResult("MsiGetSummaryInformation", "",
                      MsiGetSummaryInformationA(database.Get(), nullptr, 0, summary.Out()), ignored);
  }
  return summary;
}

/// The asterisk marks that the stamp is the library's own.
bool PublishLibraryStamp() {
  return SetProperty(kDateProperty, WithRevision(Format("Packaged* on %s at %s", kBuildDate, kBuildTime)));
}

std::string NameOfMonth(WORD month) {
  const bool known = month >= 1 && month <= std::size(kMonths);
  return known ? kMonths[month - 1] : Format("%d", month);
}

bool PublishPackageStamp(const FILETIME &created) {
  SYSTEMTIME time{};
  if (FileTimeToSystemTime(&created, &time) == FALSE) {
    Log("***FileTimeToSystemTime() failed (%d)", static_cast<int>(GetLastError()));
  }
  const std::string stamp = Format("Packaged on %s %2.2d %4.4d at %2.2d:%2.2d", NameOfMonth(time.wMonth).c_str(),
                                   time.wDay, time.wYear, time.wHour, time.wMinute);
  if (!SetProperty(kDateProperty, WithRevision(stamp))) {
    return false;
  }
  const unsigned long long ticks =
      static_cast<unsigned long long>(created.dwHighDateTime) << 32 | created.dwLowDateTime;
  const std::string text = std::to_string(ticks);
  if (!SetProperty("ZQVBUILDTIME", text)) {
    return false;
  }
  Log("Build Time is '%s'", text.c_str());
  return true;
}

}  // namespace

bool PublishBuildStamp(Facts & /*facts*/) {
  const OwnedInstallerHandle summary = OpenSummary();
  if (!summary) {
    return PublishLibraryStamp();
  }
  const SummaryValue created = ReadSummary(summary.Get(), kCreateTime);
  const bool published = created.type == kTimeType ? PublishPackageStamp(created.time) : PublishLibraryStamp();
  if (!published) {
    return false;
  }
  const SummaryValue packageCode = ReadSummary(summary.Get(), kRevisionNumber);
  return packageCode.type != kTextType || SetProperty("ZQVPACKAGECODE", packageCode.text.data());
}

bool UnpackMessageLibrary(Facts &facts) {
  const std::string path = MessageLibraryName();
  if (path.empty()) {
    facts.result = ERROR_INSTALL_FAILURE;
    return true;
  }
  // Before the file is written: the library of an earlier run may be that very file.
  UseMessageLibrary(path);
  if (!iwiUnpackBinary(Format("zqvirc%cn", facts.letter), ".dll", path, nullptr)) {
    facts.result = ERROR_INSTALL_FAILURE;
  }
  return true;
}

bool UnpackCatalogue(Facts & /*facts*/) {
  const std::string path = CatalogueName();
  if (!path.empty()) {
    // Without it, which is logged, the installation goes on.
    static_cast<void>(iwiUnpackBinary("zqviwiln", ".dll", path, nullptr));
  }
  return true;
}

}  // namespace zqv
