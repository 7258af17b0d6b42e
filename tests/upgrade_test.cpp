#include "support.h"

namespace {

using std::literals::operator""s;

const std::string kVersion = "hklm\\Software\\Korvex\\QVSeries\\CurrentVersion";

/// An installation of this version in C:\qv and C:\data, over an earlier one in C:\old and C:\older.
class UpgradeTest : public LibraryTest {
 protected:
  UpgradeTest() {
    Set("ZQVPREVPGM=C:\\old\\|ZQVPREVDAT=C:\\older\\|ZQVPGMFOLDER=C:\\qv\\|ZQVDATFOLDER=C:\\data\\|"
        "ZQVTEMPFILENUM=0001|ZQVMIGRATE=1|ZQVREMOVE=0|ZQVPREVVERSION=5.3.0.1");
    world.registry[kVersion]["VRMF"] = RegistryValue::Text("5.3.0.1");
    world.MakeFolder("C:\\data");
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
  std::vector<std::string> hostile = {"C:\\",         "\\\\server\\share", "old",
                                      "C:\\a\\..\\b", "C:\\a;b",           "C:\\sys",
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
  Set("ZQVPREVPGM=C:\\Sys|ZQVPREVDAT=C:\\windows|ZQVTEMP=C:\\Sys\\TempFolder");
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
  const std::string java = "Internet Java Documents";
  // The new feature, the decision's property, the component as it is told and as it is recorded, its list.
  const std::tuple<EntryPoint, std::string, std::string, std::string, std::string, std::string> rows[] = {
      {iwiDeleteOldServer, "Server", "SERVER", "Server", "Server", "server"},
      {iwiDeleteOldLClientNt, "Client", "LCLIENTNT", "Local Client", "Local Client", "lclient"},
      {iwiDeleteOldToolkit, "Toolkit", "TOOLKIT", "Toolkit", "Toolkit", "toolkit"},
      {iwiDeleteOldInetGateway, "", "INETGATEWAY", "Internet Gateway", "Internet Gateway", "inetgate"},
      {iwiDeleteOldWebAdmin, "", "WEBADMIN", "Web Administration", "Web Administration", "webadmin"},
      {iwiDeleteOldLibraryChm, "docs_en_us_eclipse", "LIBRARYCHM", "Library (chm)", "Library chm", "libchm"},
      {iwiDeleteOldLibraryPdf, "docs_en_us_eclipse", "LIBRARYPDF", "Library (pdf)", "Library pdf", "libpdf"},
      {iwiDeleteOldInetJavaDoc, "JavaMsg", "INETJAVADOC", java, java, "inetjava"}};
  for (const auto &[action, feature, decision, told, record, list] : rows) {
    for (const auto &[recorded, state] :
         {std::pair(false, INSTALLSTATE_LOCAL), {true, INSTALLSTATE_LOCAL}, {true, INSTALLSTATE_SOURCE}}) {
      if (recorded) {
        components[record] = {REG_DWORD, "1234"};
      }
      world.features = {{feature, {INSTALLSTATE_ABSENT, state}}};
      const bool replaced = state == INSTALLSTATE_LOCAL && !feature.empty(), goes = recorded && !replaced;
      const std::string decided = !recorded ? "Not installed: '" + record + "'\n"
                                  : goes    ? "Deleting old " + told + "\n"
                                            : "New feature replaces old\n";
      ExpectRun(action, 0, "ZQVDELOLD" + decision + "=old", {": Executing in script generation\n", ": " + decided});
      EXPECT_EQ(world.properties["ZQVDELOLD" + decision], goes ? "1" : "") << record;
      const auto logs = [&](const std::string &text) { return LogText().find(text + "'\n") != std::string::npos; };
      EXPECT_EQ(logs("***Can't find binary Name: '" + list + ".u00"), recorded);
      EXPECT_EQ(logs("StackDeleteRegistryValue '" + kVersion.substr(5) + "\\Components' '" + record), goes);
      EXPECT_EQ(LogText().find("'" + feature + "' Installed: 2 Action: ") == std::string::npos, feature.empty());
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
                    {"Toolkit", {INSTALLSTATE_LOCAL, INSTALLSTATE_BROKEN}},
                    {"docs_en_us_eclipse", {INSTALLSTATE_LOCAL, INSTALLSTATE_SOURCE}},
                    {"JavaMsg", {INSTALLSTATE_ABSENT, INSTALLSTATE_LOCAL}}};
  const std::string lost = "Client,docs_en_us_eclipse";
  const std::string line = "***Features would be lost: '" + lost + "'\n";
  for (const auto &[given, result] : {std::pair("REMOVEFEATURES=YES", 0u),
                                      {"REMOVEFEATURES=maybe", 1603u},
                                      {"REMOVEFEATURES=|ZQVREMOVE=1", 0u},
                                      {"ZQVREMOVE=0|UILevel=5", 0u},
                                      {"UILevel=4", 1603u},
                                      {"UILevel=2", 1603u}}) {
    Set(given);
    EXPECT_EQ(Run(iwiTestLosingFeatures, result).find(line) != std::string::npos, result != 0) << given;
    EXPECT_EQ(world.properties["ZQVLOSINGFEATURES"], lost);
  }
  ExpectInLog({" MB error: Installing would remove these features of the earlier version: " + lost +
               ". To allow this, set REMOVEFEATURES to yes.\n"});
  components.clear();
  components["Server"] = RegistryValue::Text("");
  EXPECT_EQ(Run(iwiTestLosingFeatures).find("Property 'REMOVEFEATURES'"), std::string::npos);
  EXPECT_EQ(world.properties["ZQVLOSINGFEATURES"], "");
}

TEST_F(UpgradeTest, SettingsComeAlongAndAreNeverOverwritten) {
  const std::string names[] = {"a b.ini", "c;d.ini", "kept.ini", std::string(200, 'x') + ".ini", "z.INI"};
  for (const std::string &name : names) {
    world.WriteFile("C:\\older\\" + name, "old " + name);
  }
  world.Attributes("C:\\older\\z.INI") = FILE_ATTRIBUTE_READONLY;
  world.WriteFile("C:\\older\\sub\\deep.ini", "");
  world.WriteFile("C:\\older\\other.txt", "");
  world.WriteFile("C:\\data\\KEPT.ini", "user");
  world.WriteFile("C:\\temp\\zqvmigr\\stale.ini", "");
  world.WriteFile("C:\\temp\\zqvm0001.txt", "kept.ini\r\n");
  Run(iwiPrepareMigrateIni);
  EXPECT_EQ(world.Find("C:\\temp\\zqvmigr").node->entries.size(), std::size(names));
  world.Remove("C:\\older");
  world.messages.clear();
  Set("ZQVMIGRATEFILES2=stale.ini");
  EXPECT_NE(Run(iwiDirectMigrateScripts).find(": 'C:\\data\\kept.ini' exists; kept\n"), std::string::npos);
  EXPECT_FALSE(world.Exists("C:\\temp\\zqvm0001.txt"));
  EXPECT_EQ(world.properties["ZQVMIGRATEFILES1"], "a b.ini|c?d.ini|" + names[3] + "|z.INI");
  EXPECT_EQ(Ticks(3), 400000);
  world.WriteFile("C:\\data\\z.ini", "the package's default");
  RunIn(16, iwiDirectMigrateScripts);
  EXPECT_EQ(Ticks(2), 400000);
  for (const std::string &name : names) {
    EXPECT_EQ(Text("C:\\data\\" + name), name == "kept.ini" ? "user" : "old " + name);
  }
  // A rollback deletes what was copied, whatever else the list says.
  world.WriteFile("C:\\temp\\zqvm0001.txt", Text("C:\\temp\\zqvm0001.txt") + "..\\qv\\x\r\nC:\\qv\\x\r\nnul\r\n");
  world.WriteFile("C:\\qv\\x", "");
  EXPECT_NE(RunIn(17, iwiDirectMigrateScripts).find("***'..\\qv\\x' is no file name\n"), std::string::npos);
  EXPECT_EQ(world.Find("C:\\data").node->entries.size(), 1u);
  EXPECT_TRUE(world.Exists("C:\\qv\\x"));
  EXPECT_FALSE(world.Exists("C:\\temp\\zqvm0001.txt"));
  // A commit leaves the files and deletes the list.
  RunIn(16, iwiDirectMigrateScripts);
  EXPECT_NE(RunIn(18, iwiDirectMigrateScripts).find(": Executing in commit\n"), std::string::npos);
  EXPECT_EQ(world.Find("C:\\data").node->entries.size(), 5u);
  EXPECT_FALSE(world.Exists("C:\\temp\\zqvm0001.txt"));
  // One failure is the result, whatever follows it; and so is the user's end.
  world.held.insert("C:\\data\\a b.ini");
  RunIn(16, iwiDirectMigrateScripts, 1603);
  world.held.clear();
  world.WriteFile("C:\\temp\\zqvcancl.txt", "");
  RunIn(16, iwiDirectMigrateScripts, 1602);
  world.Remove("C:\\temp\\zqvcancl.txt");
  // More names than can be handed over; a link in the folder's place; nothing to migrate; no earlier folder.
  for (int file = 0; file < 9; ++file) {
    world.WriteFile("C:\\temp\\zqvmigr\\" + std::to_string(file) + std::string(200, 'y') + ".ini", "");
  }
  EXPECT_NE(Run(iwiDirectMigrateScripts, 1603).find("***9 names are more than 'ZQVMIGRATEFILES'"), std::string::npos);
  world.Remove("C:\\temp\\zqvmigr");
  world.MakeJunction("C:\\temp\\zqvmigr", "C:\\qv");
  EXPECT_NE(RunIn(16, iwiDirectMigrateScripts, 1603).find("***Can't use folder 'C:\\temp\\zqvmigr'"),
            std::string::npos);
  world.properties["ZQVMIGRATE"] = "";
  EXPECT_NE(Run(iwiPrepareMigrateIni).find(": Nothing to migrate\n"), std::string::npos);
  world.properties["ZQVMIGRATE"] = "1";
  EXPECT_NE(Run(iwiPrepareMigrateIni).find(": No earlier data folder\n"), std::string::npos);
  EXPECT_TRUE(world.Exists("C:\\qv\\x"));
  EXPECT_FALSE(world.Exists("C:\\temp\\zqvmigr"));
}

TEST_F(UpgradeTest, TheLevelMigratedFromIsRecordedAndPutBack) {
  NameMap<RegistryValue> &values = world.registry[kVersion];
  const RegistryValue recorded = RegistryValue::Text("5.3.0.1");
  for (const std::optional<RegistryValue> &before : {std::optional<RegistryValue>(),
                                                     {{REG_SZ, "4.0;"}},
                                                     {{REG_DWORD, "\1\0\xff\0"s}},
                                                     {{REG_SZ, std::string(127, 'x')}},
                                                     {{REG_SZ, ""}}}) {
    values.erase("MigratedFrom");
    if (before) {
      values["MigratedFrom"] = *before;
    }
    Run(iwiMigrateRegistry);
    RunIn(16, iwiMigrateRegistry);
    EXPECT_EQ(values["MigratedFrom"].bytes, recorded.bytes);
    RunIn(17, iwiMigrateRegistry);
    ASSERT_EQ(values.contains("MigratedFrom"), before.has_value());
    EXPECT_TRUE(!before ||
                (values["MigratedFrom"].bytes == before->bytes && values["MigratedFrom"].type == before->type));
  }
  values["MigratedFrom"] = {REG_SZ, std::string(129, 'x')};
  EXPECT_NE(Run(iwiMigrateRegistry).find("***Value 'MigratedFrom' is too long"), std::string::npos);
  RunIn(16, iwiMigrateRegistry);
  RunIn(17, iwiMigrateRegistry);
  EXPECT_EQ(values["MigratedFrom"].bytes.size(), 129u);
  RunIn(18, iwiMigrateRegistry, 1603);
  Reload();
  Fail("RegQueryValueExA", 5);
  iwiMigrateRegistry(kSession);
  Fail("", 0);
  EXPECT_EQ(world.properties["ZQVMIGRATEDFROM"], "");
  values.erase("MigratedFrom");
  for (const char *given : {"ZQVMIGRATE=", "ZQVMIGRATE=1|ZQVPREVVERSION="}) {
    Set(given);
    Run(iwiMigrateRegistry);
    RunIn(16, iwiMigrateRegistry);
    EXPECT_FALSE(values.contains("MigratedFrom"));
  }
  world.properties["ZQVREMOVE"] = "1";
  Run(iwiMigrateRegistry);
  EXPECT_EQ(world.tables["Registry"].rows,
            (std::vector<Row>{{"ZQVREGISTRY0", 2, kVersion.substr(5), "MigratedFrom", {}, "Base_base"}}));
}

TEST_F(UpgradeTest, QueueManagersAreListedSavedAndDeleted) {
  world.WriteFile("C:\\data\\zqvqmgrs.txt",
                  "one\n; no\n two three \nONE\n..\na/b\na:b\nx.\nCOM1.x\na\x1f\nq*\n\\srv\nfour;5\n");
  world.WriteFile("C:\\data\\qmgrs\\one\\qm.ini", "1");
  world.WriteFile("C:\\data\\qmgrs\\one\\log\\active", "x");
  world.WriteFile("C:\\data\\qmgrs\\four;5\\qm.ini", "4");
  world.WriteFile("C:\\temp\\zqvsave\\stale", "");
  Run(iwiStackLoadQMgrs);
  EXPECT_EQ(world.properties["ZQVQMGRCOUNT"] + world.properties["ZQVQMGRLIST"], "3one,two three,four;5");
  for (const char *name : {"..", "a/b", "a:b", "x.", "COM1.x", "a\x1f", "q*", "\\srv"}) {
    ExpectInLog({"***Queue manager name '"s + name + "' is not valid\n"});
  }

  Run(iwiSaveQmConfigInit);
  EXPECT_EQ(world.properties["ZQVSAVEQMCONFIG"], "1");
  EXPECT_FALSE(world.Exists("C:\\temp\\zqvsave"));
  RunIn(16, iwiSaveQmConfigExec);
  EXPECT_EQ(Ticks(3), 500000);
  EXPECT_EQ(Ticks(2), 500000);
  ExpectInLog({"Copy bypassed; source file 'C:\\data\\QVSeries.ini' does not exist\n"});
  EXPECT_EQ(Text("C:\\temp\\zqvsave\\qmgrs\\one\\qm.ini") + Text("C:\\temp\\zqvsave\\qmgrs\\four;5\\qm.ini"), "14");
  EXPECT_TRUE(world.Exists("C:\\temp\\zqvsave\\zqvqmgrs.txt"));
  RunIn(18, iwiSaveQmConfigExec, 1603);
  world.Remove("C:\\temp\\zqvsave\\qmgrs");
  world.MakeJunction("C:\\temp\\zqvsave\\qmgrs", "C:\\qv");
  EXPECT_NE(RunIn(16, iwiSaveQmConfigExec, 1603).find("***Can't use folder 'C:\\temp\\zqvsave\\qmgrs' 0\n"),
            std::string::npos);
  EXPECT_EQ(Ticks(2), 1000000);
  Set("ZQVSAVEQMUNITS=2147483647");
  RunIn(16, iwiSaveQmConfigExec, 1603);  // soon

  for (const auto &[removal, fate, deleted] :
       {std::tuple{"1", "keep", false}, {"0", "delete", false}, {"1", "delete", true}}) {
    world.properties["ZQVREMOVE"] = removal;
    world.properties["ZQVLEAVEQMDATAREMOVE"] = fate;
    EXPECT_EQ(Run(iwiStackDeleteQMgrs).find(": Queue-manager data is kept\n") == std::string::npos, deleted);
    const std::string folder = "C:\\data\\qmgrs\\";
    EXPECT_EQ(Stacked(), !deleted ? ""
                                  : folder + "one\\qm.ini 2\n" + folder + "one\\log\\active 2\n" + folder +
                                        "one\\log\\ 2\n" + folder + "one\\ 2\n" + folder + "two three\\ 2\n" + folder +
                                        "four;5\\qm.ini 2\n" + folder + "four;5\\ 2\n" + folder +
                                        " 2\nC:\\data\\zqvqmgrs.txt 2\n");
  }
  for (const char *given : {"WindowsFolder=C:\\DATA\\w", "ZQVDATFOLDER=\\"}) {
    Set(given);
    ExpectRun(iwiStackDeleteQMgrs, 0, {}, {"***Refusing to delete below '"});
    EXPECT_EQ(Stacked(), "");
  }
  Set("ZQVDATFOLDER=C:\\data");

  // As many whole names as fit into 2,047 characters.
  for (const std::size_t last : {1046u, 1047u}) {
    const std::string first(1000, 'x');
    world.WriteFile("C:\\data\\zqvqmgrs.txt", first + "\n" + std::string(last, 'y') + "\nz\n");
    Run(iwiStackLoadQMgrs);
    EXPECT_EQ(world.properties["ZQVQMGRLIST"].size(), last == 1046 ? 2047u : 1000u);
  }
}

}  // namespace
