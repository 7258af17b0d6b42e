#include "runtime/temp_name.h"

#include "base/text.h"
#include "runtime/new_file.h"
#include "runtime/property.h"

namespace zqv {

namespace {

constexpr char kNumberProperty[] = "ZQVTEMPFILENUM";
constexpr unsigned long kNumbers = 65535;

/// Fills the temporary folder's kept value, from TempFolder where ZQVTEMP is empty. False when a read fails.
bool FindTempFolder() {
  if (!GetKeptProperty(Kept::tempFolder)) {
    return false;
  }
  std::string &folder = ValueOf(Kept::tempFolder);
  if (folder.empty()) {
    if (!GetTrimmedProperty("TempFolder", folder)) {
      return false;
    }
    // The other actions look for the folder themselves.
    static_cast<void>(SetProperty(NameOf(Kept::tempFolder), folder));
  }
  return true;
}

std::string Compose(const char *prefix, const std::string &number, const char *extension) {
  return Format("%s\\%s%s%s", ValueOf(Kept::tempFolder).c_str(), prefix, number.c_str(), extension);
}

}  // namespace

std::string TempName(bool persistNumber, const char *prefix, const char *extension) {
  if (!FindTempFolder()) {
    return {};
  }
  std::string number;
  if (persistNumber) {
    if (!GetProperty(kNumberProperty, number, kCounterLength)) {
      return {};
    }
    if (!number.empty()) {
      return Compose(prefix, number, extension);
    }
  }
  if (ValueOf(Kept::tempFolder).empty()) {
    return {};
  }
  // Deliberate: whatever the reason that a file cannot be made, the next number is tried.
  for (unsigned long n = 1; n < kNumbers; ++n) {
    number = Format("%4.4lx", n);
    std::string created = iwiCreateNewFile(Compose(prefix, number, extension));
    if (!created.empty()) {
      if (persistNumber) {
        // A failure is logged; this file serves all the same.
        static_cast<void>(SetProperty(kNumberProperty, number));
      }
      return created;
    }
  }
  return {};
}

std::string ValueListName() { return TempName(true, "zqvp", ".txt"); }

std::string TempLogName() { return TempName(true, "zqvg", ".txt"); }

std::string MessageLibraryName() { return TempName(true, "zqvl", ".dll"); }

std::string CatalogueName() { return TempName(true, "zqvg", ".dll"); }

}  // namespace zqv
