#include "base/vrmf.h"
#include "init/primary/feature_lists.h"
#include "init/primary/registry_service_level.h"
#include "support.h"

namespace {

using std::literals::operator""s;
constexpr char kApplied[] = "hklm\\K\\CurrentVersion\\Maintenance Applied";

class LevelTest : public LibraryTest {
 protected:
  /// The levels that are read: shipped, previous, latest, installed, and the rollback folder; "-" for a failure.
  std::string Read() {
    ServiceLevel level{{"?", "?"}, {"?", "?"}, {"?", "?"}, {"?", "?"}, "?"};
    std::string text = ReadRegistryServiceLevel("K", level) ? "" : "-";
    for (const auto &[modification, fix] : {level.shipped, level.previous, level.latest, level.installed}) {
      text += modification + "." + fix + " ";
    }
    return text + level.rollbackFolder;
  }
};

std::string Ending(const char *latest, const char *folder, const char *previous) {
  return "Latest maintenance level is '"s + latest + "'\nRollBack value is '" + folder +
         "'\nPrevious maintenance level is '" + previous + "'\nShipped maintenance level is '" + previous + "'\n";
}

TEST_F(LevelTest, FieldsAreComparedByValueAndTextsAfterNumbers) {
  const std::string big(300, '9');
  const std::string ascending[] = {"",      "0.0.0.1", "0.0.0.2", "0.0.0.10", "0.0.0.18446744073709551616",
                                   "0.0.1", "0.0.A",   "0.0.a",   "1." + big, "01.1" + big};
  for (std::size_t a = 1; a < std::size(ascending); ++a) {
    EXPECT_EQ(CompareVrmf(SplitVrmf(ascending[a - 1]), SplitVrmf(ascending[a])), -1) << ascending[a];
    EXPECT_EQ(CompareVrmf(SplitVrmf(ascending[a]), SplitVrmf(ascending[a - 1])), 1) << ascending[a];
  }
  for (const char *same : {"1.2.0.0", " 1 .02", "1.2..", "1.2.0.000.9", "1.2. .0"}) {
    EXPECT_EQ(CompareVrmf(SplitVrmf(same), SplitVrmf("1.2")), 0) << same;
  }
}

TEST_F(LevelTest, TheHighestLevelsWithABackupCount) {
  EXPECT_EQ(Read(), "0.0 0.0 0.0 . ");
  EXPECT_EQ(Lines(), "No service applied\n" + Ending("0.0", "", "0.0"));
  world.registry["hklm\\K\\CurrentVersion"]["VRMF"] = RegistryValue::Text("6.0.2");
  world.registry[kApplied]["SHIPPED"] = RegistryValue::Text("1.5");
  EXPECT_EQ(Read(), "1.5 1.5 1.5 2.0 ");
  const std::string vrmf = "Registry VRMF is '6.0.2.0' (6.0.2)\n",
                    shipped = "Found REG_SZ value named 'SHIPPED'\n- value '1.5'\nShipped maintenance level is '1.5'\n";
  EXPECT_EQ(Lines(), vrmf + shipped + Ending("1.5", "", "1.5"));
  for (const std::string level : {"1.010", "1.10", "1.9", "2.1"}) {  // in the registry's order
    world.registry[kApplied]["Maint " + level] = RegistryValue::Text("C:\\b" + level);
    world.WriteFile("C:\\b" + level + "\\valid.CSD", "");
  }
  world.Remove("C:\\b2.1\\valid.CSD");
  EXPECT_EQ(Read(), "1.5 1.9 1.010 2.0 C:\\b1.010");
  world.WriteFile("C:\\b2.1\\Valid.csd", "");
  EXPECT_EQ(Read(), "1.5 1.010 2.1 2.0 C:\\b2.1");
  world.registry[kApplied]["Maint.2.0"] = world.registry[kApplied]["Maint_1.8"] = RegistryValue::Text("C:\\b2.1");
  EXPECT_EQ(Read(), "1.5 2.0 2.1 2.0 C:\\b2.1");  // both are met after the latest
}

TEST_F(LevelTest, OtherValuesAreShownAndHaveNoSay) {
  const std::string data(65536, 'd'), name = "maint 8" + std::string(16376, '0'), zeros(65, '\0'), hex(128, '0');
  const std::string level = "Maintenance level '", no = "' is not currently installed\n";
  std::string expected, tooLong = "***FindFirstFile(1) error 206, path '" + data + "\\Valid.csd'\n";
  world.WriteFile("C:\\Valid.csd", "");
  using Case = std::tuple<std::string, RegistryValue, std::string, std::string, std::string>;
  for (const auto &[key, value, type, shown, line] :
       {Case("Maint", {REG_SZ, ""}, "REG_SZ", "", level + "0.0' is installed\n"),
        Case("Maint 1", {REG_SZ, data}, "REG_SZ", data, tooLong + level + "1.0" + no),
        Case("Maint 3", {REG_DWORD, "\5\0\0\x80"s}, "REG_DWORD", "2147483653", level + "3.0" + no),
        Case("Maint 4", {REG_BINARY, zeros}, "REG_BINARY", hex + "...", level + "4.0" + no),
        Case("Maint 5", {REG_DWORD, "C:"}, "REG_DWORD", "433A", level + "5.0" + no),
        Case("Maint 6", {REG_MULTI_SZ, zeros.substr(1)}, "7", hex, level + "6.0" + no),
        Case("Maint 7.20", {REG_EXPAND_SZ, "C:\0x"s}, "REG_EXPAND_SZ", "C:", level + "7.20' is installed\n"),
        Case(name, {REG_SZ, "C:"}, "REG_SZ", "C:", ""),
        Case("Shipped", {REG_DWORD, "\1\0\0\0"s}, "REG_DWORD", "1", "Shipped maintenance level is ''\n")}) {
    world.registry[kApplied][key] = value;
    expected += "Found " + type + " value named '" + key + "'\n- value '" + shown + "'\n" + line;
  }
  EXPECT_EQ(Read(), "0.0 0.0 7.20 . C:");
  EXPECT_EQ(Lines(), expected + Ending("7.20", "C:", "0.0"));
}

TEST_F(LevelTest, ARegistryThatCannotBeReadLeavesNoLevel) {
  world.registry[kApplied]["Maint 1"] = RegistryValue::Text("C:");
  const std::string key = "'K\\CurrentVersion\\Maintenance Applied'";
  Fail("RegOpenKeyExA", 5, 2);
  EXPECT_EQ(Read(), "-. . . . ");
  EXPECT_TRUE(Lines().ends_with("***Open key error 5 " + key + "\n"));
  Fail("RegEnumValueA", 234);  // a value that grows for ever
  EXPECT_EQ(Read(), "-. . . . ");
  EXPECT_EQ(Lines(), "***Can't enumerate Key values: " + key + " 234\n");
}

TEST_F(LevelTest, NamesThatNeedTwoBytesACharacterAndValuesThatGrowAreRead) {
  World::codePage = 932;
  const std::string name = "\x83\x5C\x83\x5C\x83\x5C\x83\x5C";
  world.registry[kApplied] = {{"Shipped", RegistryValue::Text("1.5")}, {name, RegistryValue::Text("")}};
  EXPECT_EQ(Read(), "1.5 1.5 1.5 . ");
  ExpectInLog({"named '" + name + "'\n"});
  world.onCall = [&](std::string_view call) {
    world.registry[kApplied][name].bytes += call == "RegEnumValueA" ? "grown" : "";
  };
  EXPECT_EQ(Read(), "1.5 1.5 1.5 . ");
}

TEST_F(LevelTest, ListsOfFeaturesNameThoseOfThePackage) {
  std::vector<Row> &rows = world.tables["Feature"].rows;
  rows = {{"F0"}, {"F1"}, {"F3"}, {"F5"}};
  Set("ADDLOCAL=all,, ALL |USEINI=C:\\temp\\r.ini");
  world.WriteFile("C:\\temp\\r.ini", "[Response]\nRemove=F1\nReinstall= f3 ,x y,F3\n");
  Fail("MsiGetActiveDatabase", 5);
  EXPECT_FALSE(ValidateFeatureLists());
  ExpectInLog({"Property 'REMOVE', value 'F1' from response file\n(CaProlog): ***MsiGetActiveDatabase() failed\n"});
  Fail("MsiRecordGetStringA", 234, 2);
  EXPECT_FALSE(ValidateFeatureLists());
  EXPECT_EQ(LogText().find("Stopping"), std::string::npos);
  Fail("none", 0);
  Set("ADDSOURCE=F5|ADVERTISE=F0," + std::string(2044, 'x'));
  EXPECT_FALSE(ValidateFeatureLists());
  EXPECT_EQ(world.callCount["MsiGetActiveDatabase"], 1);
  ExpectInLog({"Unknown feature(s) 'f3,x y' in property 'REINSTALL' in 'C:\\temp\\r.ini'. (ZQV4742)\n",
               "xxx...' in command-line property 'ADVERTISE'. (ZQV4740)\n",
               "'F5' from property table\n(CaProlog): Property 'ADDDEFAULT'",
               "\n(CaProlog): ***Stopping because of unknown features\n"});
}

}  // namespace
