#include "support.h"

namespace {

using std::literals::operator""s;

const std::string kVersion = "hklm\\Software\\Korvex\\QVSeries\\CurrentVersion";

/// An installation of this version in C:\qv and C:\data, over an earlier one in C:\old and C:\older.
class UpgradeTest : public LibraryTest {
 protected:
  UpgradeTest() {
    world.properties.merge(std::map<std::string, std::string>{{"ZQVPREVPGM", "C:\\old\\"},
                                                              {"ZQVPREVDAT", "C:\\older\\"},
                                                              {"ZQVPGMFOLDER", "C:\\qv\\"},
                                                              {"ZQVDATFOLDER", "C:\\data\\"},
                                                              {"ZQVTEMPFILENUM", "0001"},
                                                              {"ZQVMIGRATE", "1"},
                                                              {"ZQVREMOVE", "0"},
                                                              {"ZQVPREVVERSION", "5.3.0.1"}});
    world.registry[kVersion]["VRMF"] = RegistryValue::Text("5.3.0.1");
    world.MakeFolder("C:\\data");
  }

  /// Runs an action after a reload; gives its lines.
  std::string Run(UINT (*action)(MSIHANDLE), UINT expected = 0) {
    Reload();
    copyCancelled = FALSE;
    EXPECT_EQ(action(kSession), expected);
    return LogText();
  }

  /// What the RemoveFile table's rows would remove, a line each, with the install mode; forgets them.
  std::string Stacked() {
    std::string text;
    for (const Row &row : std::exchange(world.tables["RemoveFile"].rows, {})) {
      const std::string *name = std::get_if<std::string>(&row[2]);
      EXPECT_EQ(std::get<std::string>(row[1]), "Base_base");
      text += world.properties[std::get<std::string>(row[3])] + (name != nullptr ? *name : "") + " " +
              std::to_string(std::get<int>(row[4])) + "\n";
    }
    return text;
  }

};

TEST_F(UpgradeTest, NothingIsStackedBelowAFolderOfTheSystemOrTheUser) {
  const char *const barred[] = {"SystemFolder",        "System64Folder",       "WindowsFolder",
                                "ProgramFilesFolder",  "ProgramFiles64Folder", "CommonFilesFolder",
                                "CommonFiles64Folder", "CommonAppDataFolder",  "AppDataFolder",
                                "LocalAppDataFolder",  "PersonalFolder",       "TempFolder"};
  world.environment["USERPROFILE"] = "C:\\users\\me";
  for (const char *name : barred) {
    world.properties[name] = "C:\\Sys\\"s + name + "\\";
  }
  std::vector<std::string> hostile = {"C:\\",         "\\\\server\\share", "\\\\server",        "old",    "C:old",
                                      "C:\\a\\..\\b", "C:\\a\\con",        "C:\\a;b",           "C:\\a?", "C:\\sys",
                                      "c:\\USERS",    "C:\\Users\\me\\",   "\"C:\\users\\me\" "};
  for (const char *name : barred) {
    hostile.push_back("c:\\sYS\\\\"s + name);
  }
  for (const std::string &folder : hostile) {
    world.properties["ZQVPREVPGM"] = folder;
    EXPECT_NE(Run(iwiDeletePrevious).find("***Refusing to delete below '"), std::string::npos) << folder;
    EXPECT_EQ(Stacked(), "") << folder;
  }
  for (const std::string folder : {"C:\\sys\\TempFolder\\x", "C:\\sys2", "C:\\users\\m", "\\\\server\\share\\x"}) {
    world.properties["ZQVPREVPGM"] = folder;
    EXPECT_EQ(Run(iwiDeletePrevious).find("***"), std::string::npos) << folder;
    EXPECT_EQ(Stacked(), folder + "\\ 1\n");
  }
  // Each folder of a list by itself, and told once; the temporary folder may be the system's.
  world.registry[kVersion + "\\Components"]["Server"] = RegistryValue::Text("x");
  const std::string list = "a\nb\nDAT,c\nTMP,*.t\n";
  world.tables["Binary"].rows = {{"server.u00", Bytes(list.begin(), list.end())}};
  for (const char *path : {"C:\\windows\\c", "C:\\sys\\TempFolder\\1.t"}) {
    world.WriteFile(path, "");
  }
  world.properties.insert_or_assign("ZQVPREVPGM", "C:\\Sys");
  world.properties.insert_or_assign("ZQVPREVDAT", "C:\\windows");
  world.properties.insert_or_assign("ZQVTEMP", "C:\\Sys\\TempFolder");
  const std::string log = Run(iwiDeleteOldServer);
  EXPECT_EQ(log.find("***Refusing to delete below 'C:\\Sys\\'\n"), log.rfind("***"));
  EXPECT_EQ(Stacked(), "C:\\windows\\c 1\nC:\\Sys\\TempFolder\\*.t 1\n");
  // Where a folder of the system cannot be read, nothing is known to be safe.
  world.properties["WindowsFolder"] = std::string(260, 'w');
  EXPECT_NE(Run(iwiDeleteOldServer).find("***Refusing to delete below 'C:\\Sys\\TempFolder\\'\n"), std::string::npos);
  Run(iwiDeletePrevious, 1603);
  EXPECT_EQ(Stacked(), "");
}

TEST_F(UpgradeTest, TheEarlierProgramsGo) {
  for (const char *path : {"bin\\a.exe", "bin\\sub\\b.dll", "doc\\x", "doc\\data\\own.dat", "other\\kept"}) {
    world.WriteFile("C:\\old\\"s + path, "");
  }
  world.WriteFile("C:\\elsewhere\\kept", "");
  world.MakeJunction("C:\\old\\bin\\link", "C:\\elsewhere");
  world.MakeJunction("C:\\old\\uninst", "C:\\elsewhere");
  world.properties["ZQVPREVDAT"] = "c:\\OLD\\doc\\data";
  EXPECT_NE(Run(iwiDeletePrevious).find("***Refusing to delete below 'C:\\old\\doc\\'\n"), std::string::npos);
  EXPECT_EQ(Stacked(),
            "C:\\old\\bin\\a.exe 1\nC:\\old\\bin\\sub\\b.dll 1\nC:\\old\\bin\\sub\\ 1\n"
            "C:\\old\\bin\\link\\ 1\nC:\\old\\bin\\ 1\n"
            "C:\\old\\uninst\\ 1\nC:\\old\\ 1\n");
  world.properties["ZQVPREVPGM"] = " \"C:\\QV\" ";
  EXPECT_NE(Run(iwiDeletePrevious).find(": Previous version is in the same folder\n"), std::string::npos);
  world.properties["ZQVPREVPGM"] = "";
  Run(iwiDeletePrevious);
  EXPECT_EQ(Stacked(), "");
}

TEST_F(UpgradeTest, AnOldComponentGoesUnlessItWasNotThere) {
  NameMap<RegistryValue> &components = world.registry[kVersion + "\\Components"];
  const std::tuple<UINT (*)(MSIHANDLE), const char *, const char *, const char *, const char *, const char *> rows[] = {
      {iwiDeleteOldServer, "Server", "SERVER", "Server", "Server", "server"},
      {iwiDeleteOldLClientNt, "Client", "LCLIENTNT", "Local Client", "Local Client", "lclient"},
      {iwiDeleteOldToolkit, "Toolkit", "TOOLKIT", "Toolkit", "Toolkit", "toolkit"},
      {iwiDeleteOldInetGateway, nullptr, "INETGATEWAY", "Internet Gateway", "Internet Gateway", "inetgate"},
      {iwiDeleteOldWebAdmin, nullptr, "WEBADMIN", "Web Administration", "Web Administration", "webadmin"},
      {iwiDeleteOldLibraryChm, "docs_en_us_eclipse", "LIBRARYCHM", "Library (chm)", "Library chm", "libchm"},
      {iwiDeleteOldLibraryPdf, "docs_en_us_eclipse", "LIBRARYPDF", "Library (pdf)", "Library pdf", "libpdf"},
      {iwiDeleteOldInetJavaDoc, "JavaMsg", "INETJAVADOC", "Internet Java Documents", "Internet Java Documents",
       "inetjava"}};
  for (const auto &[action, feature, decision, told, record, list] : rows) {
    const std::string asked = feature == nullptr ? "" : "'"s + feature + "' Installed: 2 Action: 3\n";
    const std::string property = "ZQVDELOLD"s + decision;
    world.properties[property] = "old";
    if (feature != nullptr) {
      world.features[feature] = {INSTALLSTATE_ABSENT, INSTALLSTATE_LOCAL};
    }
    Run(action);
    ExpectInLog({": Executing in script generation\n", ": " + asked, ": Not installed: '"s + record + "'\n"});
    EXPECT_EQ(world.properties[property], "");
    components[record] = {REG_DWORD, "1234"};
    for (const bool isLocal : {true, false}) {
      const bool replaced = isLocal && feature != nullptr;
      if (feature != nullptr && !isLocal) {
        world.features[feature].action = INSTALLSTATE_SOURCE;
      }
      Run(action);
      EXPECT_EQ(world.properties[property], replaced ? "" : "1") << record;
      ExpectInLog({replaced ? ": New feature replaces old\n" : ": Deleting old "s + told + "\n",
                   "***Can't find binary Name: '"s + list + ".u00'\n"});
      EXPECT_EQ(
          LogText().find(": StackDeleteRegistryValue 'Software\\Korvex\\QVSeries\\CurrentVersion\\Components' '"s +
                         record + "'\n") == std::string::npos,
          replaced);
    }
  }
  world.modes = {17};
  EXPECT_NE(Run(iwiDeleteOldServer).find(": Executing in rollback\n"), std::string::npos);
}

TEST_F(UpgradeTest, WhatAnUpgradeWouldLose) {
  NameMap<RegistryValue> &components = world.registry[kVersion + "\\Components"];
  for (const char *record : {"Internet Java Documents", "Library pdf", "Library chm", "Toolkit", "Local Client",
                             "Server", "Web Administration"}) {
    components[record] = RegistryValue::Text("");
  }
  world.features = {{"Server", {INSTALLSTATE_LOCAL, INSTALLSTATE_UNKNOWN}},
                    {"Client", {INSTALLSTATE_LOCAL, INSTALLSTATE_ABSENT}},
                    {"Toolkit", {INSTALLSTATE_ABSENT, INSTALLSTATE_BROKEN}},
                    {"docs_en_us_eclipse", {INSTALLSTATE_LOCAL, INSTALLSTATE_SOURCE}},
                    {"JavaMsg", {INSTALLSTATE_ABSENT, INSTALLSTATE_LOCAL}}};
  const std::string lost = "Client,Toolkit,docs_en_us_eclipse";
  const std::string line = "***Features would be lost: '" + lost + "'\n";
  const auto expect = [&](UINT result) {
    EXPECT_EQ(Run(iwiTestLosingFeatures, result).find(line) != std::string::npos, result != 0);
    EXPECT_EQ(world.properties["ZQVLOSINGFEATURES"], lost);
  };
  expect(1603);
  ExpectInLog({" MB error: Installing would remove these features of the earlier version: " + lost +
               ". To allow this, set REMOVEFEATURES to yes.\n"});
  for (const auto &[name, value, result] : {std::tuple{"REMOVEFEATURES", "YES", 0u},
                                            {"REMOVEFEATURES", "maybe", 1603u},
                                            {"ZQVREMOVE", "1", 0u},
                                            {"UILevel", "5", 0u},
                                            {"UILevel", "4", 1603u}}) {
    const auto before = world.properties;
    world.properties[name] = value;
    expect(result);
    world.properties = before;
  }
  components.clear();
  components["Server"] = RegistryValue::Text("");
  EXPECT_EQ(Run(iwiTestLosingFeatures).find("Property 'REMOVEFEATURES'"), std::string::npos);
  EXPECT_EQ(world.properties["ZQVLOSINGFEATURES"], "");
}

}  // namespace
