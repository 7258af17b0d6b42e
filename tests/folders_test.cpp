#include "base/folder_rule.h"
#include "base/result_code.h"
#include "support.h"

/// Where an installation goes, and what secondary initialisation makes of a response file's lists.
namespace {

const std::string kVersionKey = "hklm\\Software\\Korvex\\QVSeries\\CurrentVersion";

TEST(FolderRuleTest, EachClauseOnceWithinAndOnceBeyondItsEdge) {
  const std::string longest = "C:\\" + std::string(243, 'x');
  const std::tuple<std::string, bool> cases[] = {
      {"C:", true},  // the root of a drive
      {"z:\\a", true},
      {"1:\\a", false},
      {"C:a", false},
      {"CC:\\a", false},
      {"\\a", false},
      {"a\\b", false},
      {"\\\\server\\share", true},
      {"\\\\server\\share\\a", true},
      {"\\\\server", false},
      {"\\\\.\\a", false},
      {"\\\\?\\C:\\a", false},
      {"\\\\server\\.", false},
      {"\\\\server\\?", false},
      {"C:\\a\x1F", false},
      {"C:\\a\x7F", false},
      {"C:\\a\x80", true},
      {"C:\\!#$%&'()+,-=@[]^_`{}~", true},
      {"C:\\a<", false},
      {"C:\\a>", false},
      {"C:\\a\"b", false},
      {"C:\\a|", false},
      {"C:\\a?", false},
      {"C:\\a*", false},
      {"C:\\a/b", false},
      {"C:\\a;b", false},
      {"C:\\a:b", false},
      {"\\\\server\\C:", false},
      {"C:\\..", false},
      {"C:\\a\\.\\b", false},
      {"C:\\...", false},
      {"C:\\.a", true},
      {"C:\\ a", false},
      {"C:\\a \\b", false},
      {"C:\\a b", true},
      {"C:\\a.", false},
      {"C:\\a.b", true},
      {"C:\\con", false},
      {"C:\\PRN.txt", false},
      {"C:\\a\\Aux", false},
      {"C:\\nul.a.b", false},
      {"C:\\COM1", false},
      {"C:\\lpt9.x", false},
      {"C:\\COM0", true},
      {"C:\\COM10", true},
      {"C:\\LPT", true},
      {"C:\\CONSOLE", true},
      {"C:\\xCON", true},
      {longest, true},
      {longest + "x", false},
      {" \"C:\\\\a\\\" ", true},
  };
  for (const auto &[value, valid] : cases) {
    EXPECT_EQ(IsValidFolder(TidiedFolder(value)), valid) << value;
  }
  for (const char *empty : {"", " ", "\"\"", "\\", " \" \" "}) {
    EXPECT_EQ(TidiedFolder(empty), "") << empty;
  }
  EXPECT_EQ(TidiedFolder("C:\\a"), "C:\\a\\");
}

class FoldersTest : public LibraryTest {
 protected:
  FoldersTest() {
    world.targetPaths = {{"TARGETDIR", ""}, {"ZQVPGMFOLDER", ""}, {"ZQVDATFOLDER", ""}, {"ZQVLOGFOLDER", ""}};
  }

  using Properties = std::map<std::string, std::string>;

  /// Runs the action in a load of its own, with these properties and no others but the usual.
  ResultCode Act(UINT (*action)(MSIHANDLE), const Properties &given) {
    Reload();
    world.properties = {{"ZQVTEMP", "C:\\temp"}, {"UILevel", "2"}, {"ZQVTEMPFILENUM", "0007"}};
    for (const auto &[name, value] : given) {
      world.properties[name] = value;
    }
    for (auto &[name, path] : world.targetPaths) {
      path.clear();
    }
    return action(kSession);
  }

  /// The folders as the properties have them: program, data and log folder.
  std::string Folders() {
    std::string folders;
    for (const char *name : {"ZQVPGMFOLDER", "ZQVDATFOLDER", "ZQVLOGFOLDER"}) {
      folders += (world.properties.count(name) != 0 ? world.properties[name] : "") + " ";
    }
    return folders;
  }

  void Answer(const std::string &lines) { world.WriteFile("C:\\temp\\r.ini", "[Response]\n" + lines); }
  void Record(const Properties &values) {
    for (const auto &[name, value] : values) {
      world.registry[kVersionKey][name] = RegistryValue::Text(value);
    }
  }
};

TEST_F(FoldersTest, AChoiceMovesItsDirectoryAndABadOneMovesNothing) {
  world.modules["C:\\temp\\zqvl0007.dll"].strings[2100] = "bad %1 from %2";
  Answer("PGMFOLDER=C:\\file\\\\pgm\nLOGFOLDER=\" \"\n");
  const std::string tooLong = "C:\\" + std::string(242, 'x');
  using Case = std::tuple<Properties, ResultCode, std::string, std::string>;
  for (const auto &[given, result, folders, line] :
       {Case({}, 0, "   ", "No value in 'LOGFOLDER'; 'ZQVLOGFOLDER' stays\n"),
        Case({{"USEINI", "C:\\temp\\r.ini"}}, 0, "C:\\file\\pgm\\   ",
             "No value in 'DATFOLDER'; 'ZQVDATFOLDER' stays\n"),
        Case({{"USEINI", "C:\\temp\\r.ini"}, {"PGMFOLDER", "\"D:\\p q\""}, {"DATFOLDER", "C:\\d"}}, 0,
             "D:\\p q\\ C:\\d\\ C:\\d\\log\\ ", "Property 'ZQVLOGFOLDER' value set to 'C:\\d\\log\\'\n"),
        Case({{"DATFOLDER", "C:\\d"}, {"LOGFOLDER", "C:\\l"}}, 0, " C:\\d\\ C:\\l\\ ", "'ZQVPGMFOLDER' stays\n"),
        Case({{"PGMFOLDER", "C:\\p"}, {"LOGFOLDER", "l"}}, 1603, "   ", "***Invalid folder 'l\\' in 'LOGFOLDER'\n"),
        Case({{"PGMFOLDER", "C:\\p"}, {"DATFOLDER", tooLong}}, 1603, "   ",
             "MB error: bad " + tooLong + "\\log\\ from DATFOLDER\n"),
        Case({{"PGMFOLDER", std::string(516, 'x')}}, 1603, "   ", "***msiGetProperty('PGMFOLDER') failed (234)\n")}) {
    EXPECT_EQ(Act(iwiSetDirs, given), result) << LogText();
    EXPECT_EQ(Folders(), folders);
    ExpectInLog({line});
    EXPECT_EQ(world.callCount["MsiSetTargetPathA"], 0) << "nothing has a place before costing";
  }
}

TEST_F(FoldersTest, AfterCostingTheEngineMovesADirectoryFirst) {
  const Properties costed{{"CostingComplete", "1"}, {"PGMFOLDER", "C:\\p"}};
  EXPECT_EQ(Act(iwiSetDirs, costed), 0u);
  EXPECT_EQ(world.targetPaths["ZQVPGMFOLDER"] + Folders(), "C:\\p\\C:\\p\\   ");
  Fail("MsiSetTargetPathA", 267);
  EXPECT_EQ(Act(iwiSetDirs, costed), 1603u);
  EXPECT_EQ(Folders(), "   ");
  ExpectInLog({"***MsiSetTargetPath('C:\\p\\') failed (267)\n"});
  Fail("none", 0);
  EXPECT_EQ(Act(iwiSetDirs, {{"CostingComplete", "1"}, {"Installed", "1"}, {"PGMFOLDER", "C:\\p"}}), 0u);
  EXPECT_EQ(world.callCount["MsiSetTargetPathA"], 0);
  EXPECT_EQ(Folders(), "C:\\p\\   ");
}

TEST_F(FoldersTest, AnInstalledProductsFoldersAreFoundAgain) {
  Record({{"PgmFolder", "C:\\reg\\p"}, {"DatFolder", "C:\\reg:d"}, {"LogFolder", ""}});
  EXPECT_EQ(Act(iwiSetRegistryDirs, {}), 0u);
  EXPECT_EQ(Folders(), "C:\\reg\\p\\   ");
  ExpectInLog({"***Invalid folder 'C:\\reg:d\\' in 'DatFolder'\n"});
  EXPECT_EQ(Act(iwiSetRegistryDirs, {{"ZQVPGMFOLDER", "C:\\own\\"}}), 0u);
  EXPECT_EQ(Folders(), "C:\\own\\   ");
  for (const bool exists : {false, true}) {
    Record({{"LogFolder", "C:\\reg\\log"}});
    if (exists) {
      world.MakeFolder("C:\\reg\\log");
    }
    EXPECT_EQ(Act(iwiFindExistingLogFolder, {}), 0u);
    EXPECT_EQ(Folders(), exists ? "  C:\\reg\\log\\ " : "   ");
  }
}

TEST_F(FoldersTest, AServerImageGoesWhereItIsWanted) {
  EXPECT_EQ(Act(iwiSetAdminDir, {{"SERVERFOLDER", "C:\\image"}}), 0u);
  ExpectInLog({"Not an administrative installation\n"});
  world.modes = {MSIRUNMODE_ADMIN};
  const std::tuple<const char *, ResultCode, const char *> cases[] = {
      {"\\\\s\\i", 0, "\\\\s\\i\\"}, {"", 0, "C:\\t\\"}, {"image", 1603, "C:\\t\\"}};
  for (const auto &[folder, result, target] : cases) {
    EXPECT_EQ(Act(iwiSetAdminDir, {{"SERVERFOLDER", folder}, {"TARGETDIR", "C:\\t\\"}}), result) << folder;
    EXPECT_EQ(world.properties["TARGETDIR"], target);
  }
}

TEST_F(FoldersTest, ADialogsChoiceIsRecalculated) {
  const Properties costed{{"CostingComplete", "1"}, {"ZQVDATFOLDER", "C:\\d\\"}, {"ZQVLOGFOLDER", "C:\\D\\log\\"}};
  const auto with = [&](const Properties &more) {
    Properties all = more;
    all.insert(costed.begin(), costed.end());
    return all;
  };
  EXPECT_EQ(Act(iwiRecalcDatFolder, costed), 0u);
  EXPECT_EQ(Folders(), " C:\\d\\ C:\\D\\log\\ ");
  EXPECT_EQ(Act(iwiRecalcDatFolder, with({{"DATFOLDER", "C:\\new"}})), 0u);
  EXPECT_EQ(world.targetPaths["ZQVDATFOLDER"] + world.targetPaths["ZQVLOGFOLDER"], "C:\\new\\");
  EXPECT_EQ(Act(iwiRecalcDatFolder, with({{"DATFOLDER", "C:\\new"}, {"ZQVLOGFOLDER", "C:\\dlog\\"}})), 0u);
  EXPECT_EQ(world.targetPaths["ZQVDATFOLDER"] + world.targetPaths["ZQVLOGFOLDER"], "C:\\new\\C:\\dlog\\");
  EXPECT_EQ(Act(iwiRecalcDatFolder, with({{"DATFOLDER", "new"}})), 0u);
  EXPECT_EQ(world.targetPaths["ZQVDATFOLDER"], "");
  EXPECT_EQ(Act(iwiRecalcLogFolder, costed), 0u);
  EXPECT_EQ(world.targetPaths["ZQVLOGFOLDER"], "C:\\d\\log\\");
  Record({{"DatFolder", "C:\\reg\\d"}, {"LogFolder", "C:\\reg\\l"}});
  EXPECT_EQ(Act(iwiRecalcDatFolder, costed) + Act(iwiRecalcLogFolder, with({{"LOGFOLDER", "C:\\l"}})), 0u);
  EXPECT_EQ(world.targetPaths["ZQVLOGFOLDER"], "C:\\l\\");
  EXPECT_EQ(Act(iwiRecalcLogFolder, costed), 0u);
  EXPECT_EQ(world.targetPaths["ZQVLOGFOLDER"], "C:\\reg\\l\\");
}

TEST_F(FoldersTest, APathIsJudgedForADialog) {
  const std::string longPath = "C:\\" + std::string(2000, 'x');
  const std::tuple<const char *, std::string, const char *, std::string> cases[] = {{"", "C:\\a", "", "C:\\a"},
                                                                                    {"P", " C:\\\\a ", "1", "C:\\a\\"},
                                                                                    {"P", "a", "", "a"},
                                                                                    {"P", "", "", ""},
                                                                                    {"P", longPath, "", longPath}};
  for (const auto &[name, value, valid, after] : cases) {
    EXPECT_EQ(Act(iwiValidatePath, {{"ZQVPATHTOCHECK", name}, {"P", value}, {"ZQVPATHVALID", "old"}}), 0u);
    EXPECT_EQ(world.properties["ZQVPATHVALID"], valid) << value;
    EXPECT_EQ(world.properties["P"], after);
    EXPECT_EQ(LogText().find("***"), std::string::npos);
  }
}

TEST_F(FoldersTest, AVolumeIsKnownByItsLabel) {
  world.volumeLabels = {{"D:\\", "QV_ONE"}, {"\\\\s\\v\\", "QV_TWO"}};
  world.sourcePaths["TARGETDIR"] = "\\\\s\\v\\sub\\";
  using Case = std::tuple<const char *, const char *, const char *, const char *>;
  for (const auto &[expected, source, answer, line] :
       {Case("", "X:\\", "1", "'ZQVVOLUMEOK' value set to '1'\n"),
        Case("qv_one", "D:\\sub\\", "1", "Volume label of 'D:\\' is 'QV_ONE'; expected 'qv_one'\n"),
        Case("QV_ONE", "", "", "Volume label of '\\\\s\\v\\' is 'QV_TWO'; expected 'QV_ONE'\n"),
        Case("QV_ONE", "X:\\", "", "Can't get volume label of 'X:\\' 3\n")}) {
    EXPECT_EQ(Act(iwiCheckVolumeLabel, {{"ZQVVOLUMELABEL", expected}, {"SourceDir", source}}), 0u);
    EXPECT_EQ(world.properties["ZQVVOLUMEOK"], answer);
    ExpectInLog({line});
  }
  world.sourcePaths.clear();
  EXPECT_EQ(Act(iwiCheckVolumeLabel, {{"ZQVVOLUMELABEL", "x"}}), 0u);
  ExpectInLog({"***Unable to locate source path (267) for directory 'TARGETDIR'\n"});
}

TEST_F(FoldersTest, AResponseFilesFeatureListsBecomeTheEngines) {
  const auto lists = [&] {
    std::string text;
    for (const char *name : {"ADDLOCAL", "REMOVE", "ADDSOURCE", "ADDDEFAULT", "REINSTALL", "ADVERTISE", "ZQVREMOVE"}) {
      text += (world.properties.count(name) != 0 ? world.properties[name] : "") + "/";
    }
    return text;
  };
  const std::string all = "ADDLOCAL=Base,Server\nREMOVE=Toolkit\nADVERTISE=Client\nADDSOURCE=\n";
  using Case = std::tuple<Properties, std::string, ResultCode, const char *, const char *>;
  for (const auto &[given, answers, result, after, line] :
       {Case({}, all, 0, "Base,Server/Toolkit////Client/0/", "Property 'ADDLOCAL' value set to 'Base,Server'\n"),
        Case({{"ADDLOCAL", "Base"}}, all, 0, "Base//////0/",
             "Feature lists are given; none is taken from the response file\n"),
        Case({{"REMOVE", "All"}}, all, 0, "/All/////1/",
             "Feature lists are given; none is taken from the response file\n"),
        Case({{"Installed", "1"}}, all, 0, "//////0/", "Installed already;"),
        Case({{"UILevel", "5"}}, all, 0, "//////0/", "The dialogs choose the features;"),
        Case({}, "ADDLOCAL=Base\nREMOVE=Client, aLL", 1603, "///////",
             "***A response file cannot remove everything\n")}) {
    Answer(answers);
    Properties properties = given;
    properties["USEINI"] = "C:\\temp\\r.ini";
    EXPECT_EQ(Act(iwiInstallInitSec, properties), result) << LogText();
    EXPECT_EQ(lists(), after);
    ExpectInLog({line});
  }
}

TEST_F(FoldersTest, ScriptGenerationKnowsThePreviousInstallation) {
  Record({{"PgmFolder", "C:\\old"}, {"DatFolder", "old"}, {"VRMF", "5.3.0.2"}});
  EXPECT_EQ(Act(iwiInstallInitScript, {{"ZQVTEMP", "C:\\new\\temp"}}), 0u);
  EXPECT_TRUE(world.Exists("C:\\new\\temp"));
  EXPECT_EQ(
      world.properties["ZQVPREVPGM"] + "," + world.properties["ZQVPREVDAT"] + "," + world.properties["ZQVPREVVERSION"],
      "C:\\old,,5.3.0.2");
  Record({{"VRMF", "5.3.0.2.123456789"}});
  EXPECT_EQ(Act(iwiInstallInitScript, {{"ZQVTEMP", ""}, {"ZQVPREVPGM", "C:\\given"}}), 0u);
  EXPECT_EQ(world.properties["ZQVPREVPGM"], "C:\\given");
  ExpectInLog({"***Version '5.3.0.2.123456789' of the previous installation is too long\n"});
  EXPECT_EQ(Act(iwiInstallInitScript, {{"Installed", "1"}}), 0u);
  EXPECT_EQ(world.properties.count("ZQVPREVPGM"), 0u);
  EXPECT_EQ(Act(iwiCheckWebAdmin, {{"ZQVWEBADMIN", "old"}}), 0u);
  EXPECT_EQ(world.properties.count("ZQVWEBADMIN"), 0u);
  world.registry[kVersionKey + "\\Components"]["Web Administration"] = RegistryValue::Text("");
  EXPECT_EQ(Act(iwiCheckWebAdmin, {}), 0u);
  EXPECT_EQ(world.properties["ZQVWEBADMIN"], "1");
}

}  // namespace
