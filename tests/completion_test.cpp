#include "runtime/message.h"
#include "support.h"

namespace {

const std::string kVersion = "hklm\\Software\\Korvex\\QVSeries\\CurrentVersion";
const std::string kMaintenance = kVersion + "\\Maintenance Applied";

/// The end of an installation of the product in C:\qv, C:\data and C:\log.
class CompletionTest : public LibraryTest {
 protected:
  CompletionTest() {
    Set("ZQVPGMFOLDER=C:\\qv\\|ZQVDATFOLDER=C:\\data\\|ZQVLOGFOLDER=C:\\log\\|ZQVTEMPFILENUM=0001|ZQVREMOVE=1|"
        "ZQVLEAVEQMDATAREMOVE=delete|ZQVLEAVEWEBDATAINSTALL=delete|Installed=1|ZQVVRMF=6.0.2.0");
    world.components["Base_base"] = {INSTALLSTATE_LOCAL, INSTALLSTATE_ABSENT};
    world.registry[kVersion];
  }

  using LibraryTest::Run;
  std::string Run(EntryPoint action, const Properties &given, UINT expected = 0) {
    Set(given);
    return Run(action, expected);
  }

  void Write(std::initializer_list<const char *> paths) {
    for (const char *path : paths) {
      world.WriteFile(path, "");
    }
  }

  /// What is in the temporary folder, with a bar behind each name.
  std::string Left() {
    std::string names;
    for (const auto &[name, node] : world.Find("C:\\temp").node->entries) {
      names += name + "|";
    }
    return names;
  }
};

TEST_F(CompletionTest, EachEndLeavesWhatItShould) {
  const std::string kept = "psapi.dll|QVSeries.ini|zqvg0001.dll|zqvl0001.dll|zqvmigr|zqvp0001.txt|";
  struct End {
    const char *given;
    int mode;
    std::string left;  // besides zqvsave and the trace log
  };
  const End ends[] = {
      {"ZQVSCRIPT=done", 0, kept},                                      // a success
      {"ZQVSCRIPT=done|ZQVTEMPLOGPATH=C:\\temp\\zqvg0001.txt", 0, ""},  // a failure behind the script
      {"ZQVSCRIPT=1|ZQVTEMPLOGPATH=C:\\temp\\zqvg0001.txt", 0,
       "psapi.dll|" + kept.substr(23)},                  // in it: a rollback is to come
      {"ZQVTEMPLOGPATH=C:\\temp\\zqvg0001.txt", 0, ""},  // before it
      {"", 0, ""},                                       // before there was a log
      {"SAVEINI=C:\\qv\\psapi.dll", 0, "QVSeries.ini|"},
      {"ZQVPSAPI=C:\\qv\\psapi.dll", 0, "psapi.dll|"},
      {"ZQVSCRIPT=done|ZQVKEEPTEMPLOG=yes", 0, kept.substr(0, 36) + "zqvg0001.txt|" + kept.substr(36)},
      {"ZQVSCRIPT=1|ZQVTEMPLOGPATH=C:\\temp\\zqvg0001.txt", MSIRUNMODE_ROLLBACK, "QVSeries.ini|"},
      {"ZQVSCRIPT=1|ZQVTEMPLOGPATH=C:\\temp\\zqvg0001.txt", MSIRUNMODE_SCHEDULED, kept},
      {"ZQVTEMPFILENUM=|ZQVPSAPI=", 0, "psapi.dll|zqvg0001.dll|zqvg0001.txt|zqvl0001.dll|zqvp0001.txt|"},
  };
  const auto before = world.properties;
  for (const End &end : ends) {
    world.properties = before;
    Write({"C:\\temp\\QVSeries.ini", "C:\\temp\\psapi.dll", "C:\\temp\\zqvg0001.dll", "C:\\temp\\zqvl0001.dll",
           "C:\\temp\\zqvmigr\\sub\\x", "C:\\temp\\zqvp0001.txt", "C:\\temp\\zqvsave\\x", "C:\\temp\\zqvt0001.log",
           "C:\\temp\\zqvcancl.txt", "C:\\qv\\psapi.dll"});
    world.WriteFile("C:\\temp\\zqvg0001.txt", "a line\r\n");
    Set("SAVEINI=c:\\TEMP\\qvseries.ini|ZQVPSAPI=C:\\TEMP\\psapi.dll|ZQVUSERTRACEPATH=C:\\temp\\zqvt0001.log");
    Set(end.given);
    const bool isOpen = world.properties["ZQVTEMPLOGPATH"] != "";
    const std::string log = end.mode != 0 ? RunIn(end.mode, iwiCleanUp) : Run(iwiCleanUp);
    std::string left = Left();
    for (const char *name : {"zqvsave|", "zqvt0001.log|"}) {
      ASSERT_NE(left.find(name), std::string::npos) << end.given << left;
      left.erase(left.find(name), std::string_view(name).size());
    }
    EXPECT_EQ(left, end.left) << end.given;
    EXPECT_EQ(log.find(">>a line") != std::string::npos, isOpen && end.mode == 0) << end.given;
    EXPECT_TRUE(world.Exists("C:\\qv\\psapi.dll"));
    EXPECT_EQ(log.find("ignored during deferred execution"), std::string::npos);
    EXPECT_EQ(log.find("Created '"), std::string::npos);
  }
  // A success then goes on with these; what is in use stays, and is told.
  Write({"C:\\temp\\zqvmigr\\x", "C:\\temp\\zqvsave\\sub\\x", "C:\\temp\\zqvl0001.dll"});
  world.held.insert("C:\\temp\\zqvsave\\sub\\x");
  Set("ZQVDELOLDSERVER=1|ZQVDELOLDZHTW=1");
  EXPECT_NE(Run(iwiCleanUpSuccess).find("***Folder 'C:\\temp\\zqvsave' cannot be deleted\n"), std::string::npos);
  EXPECT_FALSE(world.Exists("C:\\temp\\zqvmigr"));
  EXPECT_EQ(Values({"ZQVDELOLDSERVER", "ZQVDELOLDZHTW"}), "||");
  Reload();
  Set("ZQVTEMPFILENUM=0001|ZQVPSAPI=C:\\temp\\psapi.dll");
  world.modules["C:\\temp\\zqvl0001.dll"].strings[1] = "text";
  EXPECT_EQ(NlsText(1), "text");
  iwiCleanUpFinal(kSession);
  EXPECT_LT(LogText().find("Freeing NLS library\n"), LogText().find("Deleted file: 'C:\\temp\\zqvl0001.dll'\n"));
  EXPECT_EQ(Left(), "zqvg0001.txt|zqvsave|zqvt0001.log|");
  for (const char *folder : {"", "temp"}) {
    Set(Properties{{"ZQVTEMP", folder}});
    EXPECT_EQ(Run(iwiCleanUp).find("***"), std::string::npos);
  }
}

TEST_F(CompletionTest, TheLogThatCannotBeReadIsTold) {
  world.WriteFile("C:\\temp\\zqvg0001.txt", "a line\r\n");
  Fail("fread", 5);
  EXPECT_NE(Run(iwiUnSetTempLogPath).find("***Can't read all of 'C:\\temp\\zqvg0001.txt'\n"), std::string::npos);
  EXPECT_TRUE(world.Exists("C:\\temp\\zqvg0001.txt"));
}

TEST_F(CompletionTest, WhatTheProductHasLeftIsStackedWhereItGoes) {
  Write({"C:\\qv\\bin\\a.trc", "C:\\qv\\bin\\b.err", "C:\\qv\\bin\\c.exe", "C:\\data\\errors\\e.log",
         "C:\\data\\errors\\e.txt", "C:\\data\\conv\\t.tbl", "C:\\data\\conv\\t.txt", "C:\\qv\\docs\\fr_fr\\i.idx",
         "C:\\data\\web\\scripts\\sub\\s", "C:\\data\\web\\x", "C:\\data\\zqvilogn.txt", "C:\\data\\QVSERIES.INI",
         "C:\\data\\own.ini", "C:\\log\\qv1.log", "C:\\log\\QV.txt", "C:\\log\\other.log", "C:\\temp\\zqvmigr\\m"});
  world.features = {{"Server", {INSTALLSTATE_LOCAL, INSTALLSTATE_ABSENT}},
                    {"docs_fr_fr_eclipse", {INSTALLSTATE_LOCAL, INSTALLSTATE_ABSENT}},
                    {"docs_de_de_eclipse", {INSTALLSTATE_LOCAL, INSTALLSTATE_UNKNOWN}}};
  const std::string server =
      "C:\\qv\\bin\\a.trc 2\n%C:\\qv\\bin\\b.err 2\n%C:\\data\\errors\\e.log 2\n%C:\\data\\errors\\ 2\n";
  const std::string documents = "C:\\qv\\docs\\fr_fr\\i.idx 2\n%C:\\qv\\docs\\fr_fr\\ 2\n";
  struct Case {
    EntryPoint action;
    const char *condition;  // without it nothing is stacked
    std::string stacked;
  };
  const Case cases[] = {
      {iwiStackCleanUpServer, "", server},
      {iwiStackCleanUpFeatures, "", documents},
      {iwiStackCleanUpCcsid, "ZQVREMOVE=0", "C:\\data\\conv\\t.tbl 2\n%C:\\data\\conv\\ 2\n"},
      {iwiStackDeleteWebScripts, "ZQVLEAVEWEBDATAINSTALL=keep",
       "C:\\data\\web\\scripts\\sub\\s 3\n%C:\\data\\web\\scripts\\sub\\ 3\n%C:\\data\\web\\scripts\\ 3\n"},
      {iwiStackDeleteMigFolders, "", "C:\\temp\\zqvmigr\\m 2\n%C:\\temp\\zqvmigr\\ 2\n%C:\\temp\\zqvsave\\ 2\n"},
      {iwiStackCleanUpFinal, "ZQVLEAVEQMDATAREMOVE=keep",
       "C:\\data\\QVSeries.ini 2\n%C:\\data\\zqvilogn.txt 2\n%C:\\data\\qmgrs\\ 2\n%C:\\data\\web\\ 2\n%C:\\data\\ "
       "2\n"},
      {iwiStackCleanUpFinal, "ZQVREMOVE=", ""},
      {iwiUninstallCleanUp, "ZQVREMOVE=0", "C:\\log\\qv1.log 2\n%C:\\log\\QV.txt 2\n%C:\\log\\ 2\n"},
  };
  const auto with = [](std::string text, const std::string &component) {
    for (std::size_t at = 0; (at = text.find('%', at)) != std::string::npos;) {
      text.replace(at, 1, component + " ");
    }
    return text.empty() ? text : component + " " + text;
  };
  const auto before = world.properties;
  for (const Case &each : cases) {
    if (!each.stacked.empty()) {
      EXPECT_EQ(Run(each.action).find("***"), std::string::npos) << each.stacked;
      EXPECT_EQ(Stacked(), with(each.stacked, "Base_base"));
    }
    if (*each.condition != '\0') {
      EXPECT_NE(Run(each.action, each.condition).find("; nothing is stacked\n"), std::string::npos);
      EXPECT_EQ(Stacked(), "");
    }
    world.properties = before;
    // Folders of the system; then one that is not known to be none.
    const Properties barred =
        "WindowsFolder=C:\\DATA\\w|CommonFilesFolder=c:\\qv|SystemFolder=C:\\log\\x|PersonalFolder="
        "C:\\TEMP\\zqvmigr\\a|AppDataFolder=C:\\temp\\zqvsave";
    const Properties unknown{{"ProgramFilesFolder", std::string(260, 'x')}};
    for (const auto &[given, result] : {std::pair{barred, 0u}, {unknown, 1603u}}) {
      EXPECT_NE(Run(each.action, given, result).find("***"), std::string::npos) << each.stacked;
      EXPECT_EQ(Stacked(), "");
      world.properties = before;
    }
  }
  // A feature alone: its first component that goes. A product that is being installed: the base's.
  world.components = {{"Base_base", {INSTALLSTATE_LOCAL, INSTALLSTATE_UNKNOWN}},
                      {"cShared", {INSTALLSTATE_LOCAL, INSTALLSTATE_LOCAL}},
                      {"cServer", {INSTALLSTATE_LOCAL, INSTALLSTATE_ABSENT}}};
  world.tables["FeatureComponents"] = {
      {"Feature_", "Component_"}, {{"Server", "cShared"}, {"Server", "cServer"}, {"docs_fr_fr_eclipse", "cShared"}}};
  Run(iwiStackCleanUpServer);
  EXPECT_EQ(Stacked(), with(server, "cServer"));
  EXPECT_NE(Run(iwiStackCleanUpFeatures).find("No component of 'docs_fr_fr_eclipse' goes; nothing is stacked\n"),
            std::string::npos);
  EXPECT_EQ(Stacked(), "");
  Run(iwiStackCleanUpServer, "Installed=");
  EXPECT_EQ(Stacked(), with(server, "Base_base"));
  // A link in a folder's place goes itself.
  world.Remove("C:\\data\\conv");
  world.MakeJunction("C:\\data\\conv", "C:\\qv");
  Write({"C:\\qv\\t.tbl"});
  Run(iwiStackCleanUpCcsid);
  EXPECT_EQ(Stacked(), "Base_base C:\\data\\conv\\ 2\n");
  world.modes = {MSIRUNMODE_COMMIT};
  Run(iwiStackDeleteMigFolders);
  EXPECT_EQ(Stacked(), "");
}

TEST_F(CompletionTest, MaintenanceGoesWithItsRecord) {
  Write({"C:\\csd\\sub\\x", "C:\\windows\\x"});
  Set("WindowsFolder=C:\\windows");
  world.registry[kMaintenance] = {{"Maint 1.1", RegistryValue::Text("\"C:\\csd\\\"")},
                                  {"Maint [2]", RegistryValue::Text("C:\\windows")},
                                  {"Maint 3", {REG_DWORD, "1234"}},
                                  {"Maint 4", RegistryValue::Text("C:\\temp")},
                                  {"Shipped", RegistryValue::Text("1.0")}};
  Run(iwiStackDeleteCsds);
  ExpectInLog({"***Refusing to delete below 'C:\\windows\\'\n", "***Refusing to delete below 'C:\\temp\\'\n"});
  EXPECT_EQ(Stacked(), "Base_base C:\\csd\\sub\\x 2\nBase_base C:\\csd\\sub\\ 2\nBase_base C:\\csd\\ 2\n");
  std::string names;
  for (const Row &row : world.tables["Registry"].rows) {
    names += std::get<std::string>(row[3]) + "|";
  }
  EXPECT_EQ(names, "Maint 1.1|Maint 3|Maint 4|Maint [\\[]2[\\]]|");
  Fail("MsiViewModify", 1627);
  Run(iwiStackDeleteCsds, 1603);
  Fail("", 0);
  Run(iwiStackDeleteCsds, "ZQVREMOVE=0");
  EXPECT_EQ(Stacked(), "");
}

TEST_F(CompletionTest, TheRegistryRecordsTheProduct) {
  // The Value column is a formatted text.
  Run(iwiStackRegistryUpdates, "ZQVPGMFOLDER=C:\\[qv] {x}\\|ZQVLOGFOLDER=|ZQVVRMF=#6.0#");
  const std::string key = kVersion.substr(5);
  EXPECT_EQ(world.tables["Registry"].rows,
            (std::vector<Row>{{"ZQVREGISTRY0", 2, key, "PgmFolder", "C:\\[\\[]qv[\\]] [\\{]x[\\}]\\", "Base_base"},
                              {"ZQVREGISTRY1", 2, key, "DatFolder", "C:\\data\\", "Base_base"},
                              {"ZQVREGISTRY2", 2, key, "LogFolder", {}, "Base_base"},
                              {"ZQVREGISTRY3", 2, key, "VRMF", "##6.0#", "Base_base"}}));
  const std::pair<const char *, int> choices[] = {
      {"ZQVREMOVE=1", 1}, {"ZQVREMOVE=0", 0}, {"ZQVREMOVE=0|ZQVSETHIGHCONTRAST=0", 1}};
  for (const auto &[given, rows] : choices) {
    world.tables["Registry"].rows.clear();
    Run(iwiStackSetHighContrast, given);
    EXPECT_EQ(world.tables["Registry"].rows.size(), static_cast<std::size_t>(rows)) << given;
  }
  Fail("MsiViewModify", 1627);
  Run(iwiStackRegistryUpdates, 1603);
  Run(iwiStackSetHighContrast, 1603);
}

TEST_F(CompletionTest, TheLevelIsSetAndPutBack) {
  NameMap<RegistryValue> &values = world.registry[kVersion];
  Set("ZQVREMOVE=0|ZQVVRMF=6.0.2.0");
  const auto recorded = [&] { return values.contains("VRMF") ? values["VRMF"].bytes.c_str() : "none"; };
  struct Case {
    std::optional<RegistryValue> before;
    const char *handed;
    const char *putBack;
  };
  const Case cases[] = {{std::nullopt, "", "none"},
                        {RegistryValue::Text("6.0.1.0"), "6.0.1.0", "6.0.1.0"},
                        {RegistryValue::Text("6;1"), "?", "6.0.2.0"},
                        {RegistryValue::Text(std::string(260, '6')), "?", "6.0.2.0"},
                        {{{REG_DWORD, "1234"}}, "?", "6.0.2.0"}};
  for (const Case &each : cases) {
    values.clear();
    if (each.before) {
      values["VRMF"] = *each.before;
    }
    Run(iwiRegistryFix);
    EXPECT_EQ(world.properties["ZQVOLDVRMF"], each.handed);
    RunIn(MSIRUNMODE_SCHEDULED, iwiRegistryFix);
    EXPECT_STREQ(recorded(), "6.0.2.0");
    EXPECT_NE(RunIn(MSIRUNMODE_SCHEDULED, iwiRegistryFix).find(": Registry VRMF is up to date\n"), std::string::npos);
    RunIn(MSIRUNMODE_ROLLBACK, iwiRegistryFix);
    EXPECT_STREQ(recorded(), each.putBack);
  }
  RunIn(MSIRUNMODE_COMMIT, iwiRegistryFix, 1603);
  values.clear();
  Set("ZQVREMOVE=1");
  RunIn(MSIRUNMODE_SCHEDULED, iwiRegistryFix);
  EXPECT_STREQ(recorded(), "none");
}

TEST_F(CompletionTest, AnEarlierProgramFolderIsTidiedUp) {
  for (const char *folder : {"C:\\old\\bin", "C:\\old\\uninst", "C:\\old\\doc", "C:\\windows"}) {
    world.MakeFolder(folder);
  }
  Set("ZQVPREVPGM=c:\\OLD|WindowsFolder=C:\\windows");
  Write({"C:\\old\\uninst\\x"});
  Run(iwiInstallTidyUp);
  RunIn(MSIRUNMODE_ROLLBACK, iwiInstallTidyUp);
  EXPECT_TRUE(world.Exists("C:\\old\\bin"));
  RunIn(MSIRUNMODE_SCHEDULED, iwiInstallTidyUp);
  EXPECT_FALSE(world.Exists("C:\\old\\bin") || world.Exists("C:\\old\\doc"));
  world.Remove("C:\\old\\uninst\\x");
  RunIn(MSIRUNMODE_SCHEDULED, iwiInstallTidyUp);
  EXPECT_FALSE(world.Exists("C:\\old"));
  RunIn(MSIRUNMODE_COMMIT, iwiInstallTidyUp, 1603);
  for (const char *previous : {"C:\\QV", "C:\\windows", ""}) {
    Run(iwiInstallTidyUp, Properties{{"ZQVPREVPGM", previous}, {"ZQVTIDYFOLDER", "C:\\other"}});
    EXPECT_EQ(world.properties["ZQVTIDYFOLDER"], "");
  }
}

}  // namespace
