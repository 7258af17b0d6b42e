#include "base/folder_rule.h"
#include "support.h"

/// Where an installation goes, and what secondary initialisation makes of a response file's lists.
namespace {

const std::string kVersionKey = "hklm\\Software\\Korvex\\QVSeries\\CurrentVersion";

TEST(FolderRuleTest, EachClauseOnceWithinAndOnceBeyondItsEdge) {
  const std::string longest = "C:\\" + std::string(243, 'x'), allowed = "C:\\!#$%&'()+,-=@[]^_`{}~\x80";
  const std::vector<std::string> good = {"C:",        "z:\\a",   "\\\\s\\s",    "\\\\s\\s\\a", "C:\\.a",
                                         "C:\\a b",   "C:\\a.b", longest,       allowed,       "C:\\COM0",
                                         "C:\\COM10", "C:\\LPT", "C:\\CONSOLE", "C:\\xCON"};
  const std::vector<std::string> bad = {
      "1:\\a",       "C:a",          "CC:\\a",        "\\a",           "a\\b",           "\\\\server",  // not absolute
      "\\\\.\\a",    "\\\\?\\C:\\a", "\\\\server\\.", "\\\\server\\?", "\\\\server\\C:", "C:\\a:b",
      "C:\\a;b",     "C:\\a\x1F",    "C:\\a\x7F",     "C:\\a<",        "C:\\a>",         "C:\\a\"b",
      "C:\\a|",      "C:\\a?",       "C:\\a*",        "C:\\a/b",       "C:\\..",         "C:\\a\\.\\b",
      "C:\\...",     "C:\\ a",       "C:\\a \\b",     "C:\\a.",        longest + "x",    "C:\\con",
      "C:\\PRN.txt", "C:\\a\\Aux",   "C:\\nul.a.b",   "C:\\COM1",      "C:\\lpt9.x"};  // devices
  for (const std::string &value : good) {
    EXPECT_TRUE(IsValidFolder(TidiedFolder(value))) << value;
  }
  for (const std::string &value : bad) {
    EXPECT_FALSE(IsValidFolder(TidiedFolder(value))) << value;
  }
  for (const char *empty : {"", " ", "\"\"", "\\", " \" \" "}) {
    EXPECT_EQ(TidiedFolder(empty), "") << empty;
  }
  EXPECT_EQ(TidiedFolder("C:\\a") + TidiedFolder(" \"C:\\\\a\\\" "), "C:\\a\\C:\\a\\");
}

class FoldersTest : public LibraryTest {
 protected:
  FoldersTest() {
    world.targetPaths = {{"TARGETDIR", ""}, {"ZQVPGMFOLDER", ""}, {"ZQVDATFOLDER", ""}, {"ZQVLOGFOLDER", ""}};
  }

  /// Runs the action in a load of its own, with these properties and no others but the usual.
  void Act(EntryPoint action, UINT result, const Properties &given = {},
           std::initializer_list<std::string> texts = {}) {
    world.properties = {{"ZQVTEMP", "C:\\temp"}, {"UILevel", "2"}, {"ZQVTEMPFILENUM", "0007"}};
    for (auto &[name, path] : world.targetPaths) {
      path.clear();
    }
    ExpectRun(action, result, given, texts);
  }

  std::string Folders() { return Values({"ZQVPGMFOLDER", "ZQVDATFOLDER", "ZQVLOGFOLDER"}); }
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
  using Case = std::tuple<Properties, UINT, std::string, std::string>;
  for (const auto &[given, result, folders, line] :
       {Case({}, 0, "|||", "No value in 'LOGFOLDER'; 'ZQVLOGFOLDER' stays\n"),
        Case("USEINI=C:\\temp\\r.ini", 0, "C:\\file\\pgm\\|||", "No value in 'DATFOLDER'; 'ZQVDATFOLDER' stays\n"),
        Case("USEINI=C:\\temp\\r.ini|PGMFOLDER=\"D:\\p q\"|DATFOLDER=C:\\d", 0, "D:\\p q\\|C:\\d\\|C:\\d\\log\\|",
             "Property 'ZQVLOGFOLDER' value set to 'C:\\d\\log\\'\n"),
        Case("DATFOLDER=C:\\d|LOGFOLDER=C:\\l", 0, "|C:\\d\\|C:\\l\\|", "'ZQVPGMFOLDER' stays\n"),
        Case("PGMFOLDER=C:\\p|LOGFOLDER=l", 1603, "|||", "***Invalid folder 'l\\' in 'LOGFOLDER'\n"),
        Case({{"PGMFOLDER", "C:\\p"}, {"DATFOLDER", tooLong}}, 1603, "|||",
             "MB error: bad " + tooLong + "\\log\\ from DATFOLDER\n"),
        Case({{"PGMFOLDER", std::string(516, 'x')}}, 1603, "|||", "***msiGetProperty('PGMFOLDER') failed (234)\n")}) {
    Act(iwiSetDirs, result, given, {line});
    EXPECT_EQ(Folders(), folders);
    EXPECT_EQ(world.callCount["MsiSetTargetPathA"], 0) << "nothing has a place before costing";
  }
}

TEST_F(FoldersTest, AfterCostingTheEngineMovesADirectoryFirst) {
  Properties costed = "CostingComplete=1|PGMFOLDER=C:\\p";
  Act(iwiSetDirs, 0, costed);
  EXPECT_EQ(world.targetPaths["ZQVPGMFOLDER"] + Folders(), "C:\\p\\C:\\p\\|||");
  Fail("MsiSetTargetPathA", 267);
  Act(iwiSetDirs, 1603, costed, {"***MsiSetTargetPath('C:\\p\\') failed (267)\n"});
  EXPECT_EQ(Folders(), "|||");
  Fail("none", 0);
  costed["Installed"] = "1";
  Act(iwiSetDirs, 0, costed);
  EXPECT_EQ(world.callCount["MsiSetTargetPathA"], 0);
  EXPECT_EQ(Folders(), "C:\\p\\|||");
}

TEST_F(FoldersTest, AnInstalledProductsFoldersAreFoundAgain) {
  Record("PgmFolder=C:\\reg\\p|DatFolder=C:\\reg:d|LogFolder=");
  Act(iwiSetRegistryDirs, 0, {}, {"***Invalid folder 'C:\\reg:d\\' in 'DatFolder'\n"});
  EXPECT_EQ(Folders(), "C:\\reg\\p\\|||");
  Act(iwiSetRegistryDirs, 0, "ZQVPGMFOLDER=C:\\own\\");
  EXPECT_EQ(Folders(), "C:\\own\\|||");
  Record("LogFolder=C:\\reg\\log");
  Act(iwiFindExistingLogFolder, 0);
  EXPECT_EQ(Folders(), "|||");
  world.MakeFolder("C:\\reg\\log");
  Act(iwiFindExistingLogFolder, 0);
  EXPECT_EQ(Folders(), "||C:\\reg\\log\\|");
}

TEST_F(FoldersTest, AServerImageGoesWhereItIsWanted) {
  Act(iwiSetAdminDir, 0, "SERVERFOLDER=C:\\image", {"Not an administrative installation\n"});
  world.modes = {MSIRUNMODE_ADMIN};
  for (const auto &[folder, result, target] :
       {std::tuple("\\\\s\\i", 0u, "\\\\s\\i\\"), {"", 0u, "C:\\t\\"}, {"image", 1603u, "C:\\t\\"}}) {
    Act(iwiSetAdminDir, result, {{"SERVERFOLDER", folder}, {"TARGETDIR", "C:\\t\\"}});
    EXPECT_EQ(world.properties["TARGETDIR"], target) << folder;
  }
}

TEST_F(FoldersTest, ADialogsChoiceIsRecalculated) {
  const Properties costed = "CostingComplete=1|ZQVDATFOLDER=C:\\d\\|ZQVLOGFOLDER=C:\\D\\log\\",
                   recorded = "DatFolder=C:\\reg\\d|LogFolder=C:\\reg\\l";
  const std::tuple<EntryPoint, Properties, Properties, const char *> cases[] = {
      {iwiRecalcDatFolder, {}, {}, "|"},
      {iwiRecalcDatFolder, "DATFOLDER=C:\\new", {}, "C:\\new\\|"},
      {iwiRecalcDatFolder, "DATFOLDER=C:\\new|ZQVLOGFOLDER=C:\\dlog\\", {}, "C:\\new\\|C:\\dlog\\"},
      {iwiRecalcDatFolder, "DATFOLDER=new", {}, "|"},
      {iwiRecalcLogFolder, {}, {}, "|C:\\d\\log\\"},
      {iwiRecalcDatFolder, {}, recorded, "C:\\reg\\d\\|"},
      {iwiRecalcLogFolder, {}, recorded, "|C:\\reg\\l\\"},
      {iwiRecalcLogFolder, "LOGFOLDER=C:\\l", recorded, "|C:\\l\\"}};
  for (const auto &[action, chosen, inRegistry, targets] : cases) {
    Record(inRegistry);
    Properties given = chosen;
    given.insert(costed.begin(), costed.end());
    Act(action, 0, given);
    EXPECT_EQ(world.targetPaths["ZQVDATFOLDER"] + "|" + world.targetPaths["ZQVLOGFOLDER"], targets);
    EXPECT_TRUE(std::string_view(targets) != "|" || Folders() == "|C:\\d\\|C:\\D\\log\\|");
  }
}

TEST_F(FoldersTest, APathIsJudgedForADialog) {
  const std::string longPath = "C:\\" + std::string(2000, 'x');
  const std::tuple<const char *, std::string, const char *, std::string> cases[] = {{"", "C:\\a", "", "C:\\a"},
                                                                                    {"P", " C:\\\\a ", "1", "C:\\a\\"},
                                                                                    {"P", "a", "", "a"},
                                                                                    {"P", "", "", ""},
                                                                                    {"P", longPath, "", longPath}};
  for (const auto &[name, value, valid, after] : cases) {
    Act(iwiValidatePath, 0, {{"ZQVPATHTOCHECK", name}, {"P", value}, {"ZQVPATHVALID", "old"}});
    EXPECT_EQ(Values({"ZQVPATHVALID", "P"}), valid + ("|" + after) + "|");
    EXPECT_EQ(LogText().find("***"), std::string::npos);
  }
}

TEST_F(FoldersTest, AVolumeIsKnownByItsLabel) {
  world.volumeLabels = {{"D:\\", "QV_ONE"}, {"\\\\s\\v\\", "QV_TWO"}};
  world.sourcePaths["TARGETDIR"] = "\\\\s\\v\\sub\\";
  for (const auto &[expected, source, answer, line] :
       {std::tuple("", "X:\\", "1", "'ZQVVOLUMEOK' value set to '1'\n"),
        {"qv_one", "D:\\sub\\", "1", "Volume label of 'D:\\' is 'QV_ONE'; expected 'qv_one'\n"},
        {"QV_ONE", "", "", "Volume label of '\\\\s\\v\\' is 'QV_TWO'; expected 'QV_ONE'\n"},
        {"QV_ONE", "X:\\", "", "Can't get volume label of 'X:\\' 3\n"}}) {
    Act(iwiCheckVolumeLabel, 0, {{"ZQVVOLUMELABEL", expected}, {"SourceDir", source}}, {line});
    EXPECT_EQ(world.properties["ZQVVOLUMEOK"], answer);
  }
  world.sourcePaths.clear();
  Act(iwiCheckVolumeLabel, 0, "ZQVVOLUMELABEL=x",
      {"***Unable to locate source path (267) for directory 'TARGETDIR'\n"});
}

TEST_F(FoldersTest, AResponseFilesFeatureListsBecomeTheEngines) {
  const std::string all = "ADDLOCAL=Base,Server\nREMOVE=Toolkit\nADVERTISE=Client\nADDSOURCE=\n";
  const char given[] = "Feature lists are given; none is taken from the response file\n";
  using Case = std::tuple<Properties, std::string, UINT, const char *, const char *>;
  for (const auto &[properties, answers, result, lists, line] :
       {Case({}, all, 0, "Base,Server|Toolkit||||Client|0|", "Property 'ADDLOCAL' value set to 'Base,Server'\n"),
        Case("ADDLOCAL=Base", all, 0, "Base||||||0|", given), Case("REMOVE=All", all, 0, "|All|||||1|", given),
        Case("Installed=1", all, 0, "||||||0|", "Installed already;"),
        Case("UILevel=5", all, 0, "||||||0|", "The dialogs choose the features;"),
        Case({}, "ADDLOCAL=Base\nREMOVE=Client, aLL", 1603, "|||||||",
             "***A response file cannot remove everything\n")}) {
    Answer(answers);
    Properties withFile = properties;
    withFile["USEINI"] = "C:\\temp\\r.ini";
    Act(iwiInstallInitSec, result, withFile, {line});
    EXPECT_EQ(Values({"ADDLOCAL", "REMOVE", "ADDSOURCE", "ADDDEFAULT", "REINSTALL", "ADVERTISE", "ZQVREMOVE"}), lists);
  }
}

TEST_F(FoldersTest, ScriptGenerationKnowsThePreviousInstallation) {
  const auto previous = [&] { return Values({"ZQVPREVPGM", "ZQVPREVDAT", "ZQVPREVVERSION"}); };
  Record("PgmFolder=C:\\old|DatFolder=old|VRMF=5.3.0.2");
  Act(iwiInstallInitScript, 0, "ZQVTEMP=C:\\new\\temp");
  EXPECT_TRUE(world.Exists("C:\\new\\temp"));
  EXPECT_EQ(previous(), "C:\\old||5.3.0.2|");
  Record("VRMF=5.3.0.2.123456789");
  Act(iwiInstallInitScript, 0, "ZQVTEMP=|ZQVPREVPGM=C:\\given",
      {"***Version '5.3.0.2.123456789' of the previous installation is too long\n"});
  EXPECT_EQ(previous(), "C:\\given|||");
  Act(iwiInstallInitScript, 0, "Installed=1");
  EXPECT_EQ(previous(), "|||");
  Act(iwiCheckWebAdmin, 0, "ZQVWEBADMIN=old");
  EXPECT_EQ(world.properties["ZQVWEBADMIN"], "");
  world.registry[kVersionKey + "\\Components"]["Web Administration"] = RegistryValue::Text("");
  Act(iwiCheckWebAdmin, 0);
  EXPECT_EQ(world.properties["ZQVWEBADMIN"], "1");
}

}  // namespace
