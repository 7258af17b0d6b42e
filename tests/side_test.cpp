#include "licence/licence_text.h"
#include "runtime/progress.h"
#include "side/eclipse_links.h"
#include "support.h"

namespace {

using std::literals::operator""s;

const std::string kZekit = "hklm\\Software\\Korvex\\QVSeries\\CurrentVersion\\Zekit";

/// An installation from D:\media to C:\qv.
class SideTest : public LibraryTest {
 protected:
  SideTest() {
    Set("ZQVPGMFOLDER=C:\\qv\\|ZQVSOURCE=D:\\media\\|ZQVLICENSEPATH=licenses|ZQVREMOVE=0|Installed=1");
    world.sourcePaths["TARGETDIR"] = "D:\\media\\";
    world.tables["File"].rows = {{"zekit", "ZSETUP~1.EXE|zekit setup.exe"}};
  }

  void Write(const Properties &files) {
    for (const auto &[path, text] : files) {
      world.WriteFile(path, text);
    }
  }

  /// All files and folders of a drive but the temporary folder, with attributes and bytes, a line each.
  static std::string Snapshot(const Node &node, const std::string &path) {
    std::string text;
    for (const auto &[name, entry] : node.entries) {
      if (name != "temp") {
        text += path + name + " " + std::to_string(entry->attributes) + " " + entry->bytes + "\n";
        text += Snapshot(*entry, path + name + "\\");
      }
    }
    return text;
  }
  std::string Snapshot() { return Snapshot(*world.Find("C:\\x").folder, ""); }

  /// What has been launched, with parameters and show command; forgets it.
  std::string Launched() {
    std::string text;
    for (const Launch &launch : std::exchange(world.launched, {})) {
      text += launch.file + " " + launch.parameters + " " + std::to_string(launch.show) + "|";
    }
    return text;
  }
};

TEST_F(SideTest, TheSourceIsFoundAndIsForEveryone) {
  world.MakeFolder("D:\\media");
  world.WriteFile("D:\\file", "");
  const std::tuple<const char *, const char *, const char *> cases[] = {
      {"ZQVSOURCE=D:\\media\\|SourceDir=D:\\x", "D:\\media\\", "1"},
      {"SourceDir=D:\\media|OriginalDatabase=D:\\x\\q.msi", "D:\\media\\", "1"},
      {"OriginalDatabase=D:\\q.msi", "D:\\", "1"},
      {"OriginalDatabase=q.msi", "", ""},
      {"ZQVSOURCE=D:\\file", "D:\\file\\", ""},
      {"ZQVSOURCE=E:\\", "E:\\", ""}};
  for (const auto &[given, source, available] : cases) {
    world.properties.erase("ZQVSOURCE");
    Set("SourceDir=|OriginalDatabase=|ZQVSOURCEAVAILABLE=x");
    ExpectRun(iwiCheckSourceAvailable, 0, given, {"Source '"s + source + "' is "});
    EXPECT_EQ(Values({"ZQVSOURCEAVAILABLE"}), available + "|"s) << given;
  }
  ExpectRun(iwiResolveSource, 0, "ZQVSOURCE=");
  EXPECT_EQ(Values({"ZQVSOURCE"}), "D:\\media\\|");
  const std::pair<DWORD, std::string> failures[] = {
      {ERROR_DIRECTORY, "***Unable to locate source path (267) for directory 'TARGETDIR'\n"},
      {5, "***MsiGetSourcePath() error 5. Directory 'TARGETDIR'\n"}};
  for (const auto &[code, line] : failures) {
    Fail("MsiGetSourcePathA", code);
    ExpectRun(iwiResolveSource, 1603, "", {line});
    EXPECT_EQ(LogText().find("File ID"), std::string::npos);
  }
  Fail("", 0);
  world.mappedDrives = {"D:\\"};
  world.WriteFile("D:\\media\\zekit setup.exe", "MZ");
  ExpectRun(iwiCopyLicenseFile, 1603, "", {"***'D:\\media\\' is on a mapped drive"});
  ExpectRun(iwiDirectInstallZekit, 1603, "ZQVZEKITAVAILABLE=1|ZQVZEKITINSTALLED=", {"exe' is on a mapped drive"});
}

TEST_F(SideTest, TheKitIsInstalledOnceOrTheInstallationFails) {
  const std::string setup = "D:\\media\\zekit setup.exe", run = setup + " /s 0|", undo = setup + " /u 0|";
  struct Case {
    bool isThere, isInstalled;
    const char *failing;
    DWORD exitCode;
    UINT result;
    std::string launched, line;
  };
  const Case cases[] = {
      {true, false, "", 0, 0, run, "exe' ended; exit code 0x00000000\n"},
      {true, false, "", 3010, 0, run, "Zekit is installed; it wants a restart\n"},
      {true, false, "", 5, 1603, run, "***Zekit setup ended with 5\n"},
      {true, false, "ShellExecuteExA", 0, 1603, "", "***Zekit setup ended with 1603\n"},
      {true, false, "WaitForSingleObject", 0, 1603, run, "***Zekit setup ended with -1\n"},
      {false, false, "", 0, 0, "", "Zekit is not available\n"},
      {true, true, "", 0, 0, "", "Zekit is installed already\n"},
  };
  for (const Case &c : cases) {
    world.registry.erase(kZekit);
    world.MakeFolder("D:\\media");
    world.Remove("D:\\media");
    if (c.isThere) {
      world.WriteFile(setup, "MZ");
    }
    if (c.isInstalled) {
      world.registry[kZekit]["Version"] = RegistryValue::Text("7");
    }
    world.programs[setup] = {c.exitCode};
    Run(iwiCheckZekitAvailable);
    EXPECT_EQ(Values({"ZQVZEKITAVAILABLE", "ZQVZEKITINSTALLED"}),
              (c.isThere ? "1|"s : "|"s) + (c.isInstalled ? "1|" : "|"));
    std::string log = Run(iwiDirectInstallZekit);
    EXPECT_EQ(Launched(), "");
    Fail(c.failing, 5);
    log += RunIn(MSIRUNMODE_SCHEDULED, iwiDirectInstallZekit, c.result);
    Fail("", 0);
    EXPECT_EQ(Launched(), c.launched);
    EXPECT_NE(log.find(c.line), std::string::npos) << log;
    EXPECT_EQ(Ticks(kProgressAddition), Ticks(kProgressIncrement));
    // What has registered itself is taken away again, and only that.
    RunIn(MSIRUNMODE_ROLLBACK, iwiDirectInstallZekit);
    EXPECT_EQ(Launched(), "");
    world.programs[setup].exitCode = 0;
    world.registry[kZekit]["Version"] = RegistryValue::Text("7");
    RunIn(MSIRUNMODE_ROLLBACK, iwiDirectInstallZekit);
    EXPECT_EQ(Launched(), c.isThere && !c.isInstalled ? undo : "");
  }
}

TEST_F(SideTest, WhatIsRegisteredIsRegisteredInEachPass) {
  world.WriteFile("C:\\qv\\bin\\zqvregnet.exe", "MZ");
  const std::string net = "C:\\qv\\bin\\zqvregnet.exe", system = "C:\\windows\\system32\\";
  const std::tuple<EntryPoint, std::string, std::string> cases[] = {
      {iwiRegisterDotNet, net, "-i"},
      {iwiDeregisterDotNet, net, "-u"},
      {iwiDirectAddPerfMonExec, system + "lodctr.exe", "\"C:\\qv\\bin\\zqvmperf.ini\""},
      {iwiDirectDeletePerfMon, system + "unlodctr.exe", "QVSeries"}};
  for (const auto &[action, program, parameters] : cases) {
    world.WriteFile(program, "MZ");
    world.programs[program] = {};
    Set("ZQVPERFMON=1");
    world.messages.clear();
    EXPECT_EQ(Run(action).find("Launching"), std::string::npos);
    EXPECT_EQ(Ticks(kProgressAddition), action == iwiDirectAddPerfMonExec ? 0 : kTicksPerUnit);
    for (const int mode : {MSIRUNMODE_SCHEDULED, MSIRUNMODE_ROLLBACK}) {
      RunIn(mode, action);
      EXPECT_EQ(Launched(), program + " " + parameters + " 0|");
    }
    EXPECT_EQ(Ticks(kProgressIncrement), kTicksPerUnit);
    world.programs[program].exitCode = 7;
    EXPECT_NE(RunIn(MSIRUNMODE_SCHEDULED, action).find("***'" + program + "' ended with 7\n"), std::string::npos);
    world.programs[program].runtimeMs = 90001;
    EXPECT_NE(RunIn(MSIRUNMODE_SCHEDULED, action).find("timed out"), std::string::npos);
    world.Remove(program);
    Set("ZQVPERFMON=");
    Launched();
    EXPECT_EQ(RunIn(MSIRUNMODE_SCHEDULED, action).find("***"), std::string::npos);
    EXPECT_EQ(Launched(), "");
  }
  for (const auto &[state, wanted] : {std::pair(InstallState{INSTALLSTATE_LOCAL, INSTALLSTATE_UNKNOWN}, "1"),
                                      std::pair(InstallState{INSTALLSTATE_LOCAL, INSTALLSTATE_ABSENT}, "")}) {
    world.messages.clear();
    world.features["Server"] = state;
    Run(iwiDirectAddPerfMonInit);
    EXPECT_EQ(Values({"ZQVPERFMON"}), wanted + "|"s);
    EXPECT_EQ(Ticks(kProgressAddition), *wanted != 0 ? kTicksPerUnit : 0);
  }
}

TEST_F(SideTest, WhatIsWrittenCanBePutBackWhereverItFails) {
  const std::string links = "C:\\qv\\eclipse\\links\\zqv_", licenses = "C:\\qv\\licenses\\";
  Write(
      "D:\\media\\licenses\\en_US.txt=new|D:\\media\\licenses\\sub\\x.txt=x|D:\\media\\licenses\\a.sig=a|"
      "D:\\media\\licenses\\b.sig=b");
  world.features = {{"docs_de_de_eclipse", {INSTALLSTATE_ABSENT, INSTALLSTATE_LOCAL}},
                    {"docs_fr_fr_eclipse", {INSTALLSTATE_LOCAL, INSTALLSTATE_UNKNOWN}},
                    {"docs_it_it_eclipse", {INSTALLSTATE_LOCAL, INSTALLSTATE_ABSENT}}};
  struct Case {
    EntryPoint action;
    const char *given;
    Properties before, after;  // files; after: "none" for none
  };
  const Case cases[] = {
      {iwiReconcileEclipseLinkFiles,
       "",
       {{links + "it_it.link", "old"}, {links + "fr_fr.link", "old"}},
       {{links + "de_de.link", "path=C\\:\\\\qv\\\\docs\\\\de_de\r\n"},
        {links + "fr_fr.link", "path=C\\:\\\\qv\\\\docs\\\\fr_fr\r\n"},
        {links + "it_it.link", "none"}}},
      {iwiCopyLicenseFile,
       "",
       {{licenses + "en_US.txt", "old"}, {licenses + "own.txt", "own"}},
       {{licenses + "en_US.txt", "new"},
        {licenses + "own.txt", "own"},
        {licenses + "sub\\x.txt", "x"},
        {licenses + "zqvfiles.txt", "a.sig\r\nb.sig\r\nen_US.txt\r\nsub\\x.txt\r\n"}}},
      {iwiInstallVlsm,
       "ZQVLICENSETYPE=trial|TRIALTOPROD=yes",
       {},
       {{licenses + "sig\\a.sig", "a"}, {licenses + "sig\\zqvfiles.txt", "a.sig\r\nb.sig\r\n"}}},
      {iwiInstallVlsm,
       "ZQVLICENSETYPE=Trial|TRIALTOPROD=",
       {{licenses + "sig\\a.sig", "old"}, {licenses + "sig\\c.sig", "c"}, {licenses + "sig\\own", "o"}},
       {{licenses + "sig\\a.sig", "none"}, {licenses + "sig\\c.sig", "none"}, {licenses + "sig\\own", "o"}}},
  };
  for (const Case &c : cases) {
    world.Remove("C:\\qv");
    Write("C:\\qv\\readme.txt=r");
    Write(c.before);
    for (const auto &[path, text] : c.before) {
      world.Attributes(path) = FILE_ATTRIBUTE_READONLY | 0x20;
    }
    const std::string before = Snapshot();
    Set(c.given);
    const auto putsBack = [&](const std::string &what) {
      // A rollback after the user has cancelled, too.
      world.WriteFile("C:\\temp\\zqvcancl.txt", "");
      const std::string log = RunIn(MSIRUNMODE_ROLLBACK, c.action);
      EXPECT_EQ(Snapshot(), before) << what << "\n" << log;
      EXPECT_FALSE(world.Exists("C:\\temp\\zqvsave\\links") || world.Exists("C:\\temp\\zqvsave\\licenses") ||
                   world.Exists("C:\\temp\\zqvsave\\sig"))
          << what << log;
      world.Remove("C:\\temp\\zqvcancl.txt");
    };
    int failed = 0;
    for (const char *call : {"CopyFileExA", "OpenCFile", "fclose", "DeleteFileA", "CreateDirectoryA"}) {
      for (int nth = 1;; ++nth) {
        Run(c.action);
        Fail(call, 112, nth);
        world.failedCall.clear();
        HandOver(world);
        world.modes = {MSIRUNMODE_SCHEDULED};
        Reload();
        copyCancelled = FALSE;
        c.action(kSession);
        world.modes = {};
        const bool hasFailed = !world.failedCall.empty();
        failed += hasFailed;
        Fail("", 0);
        putsBack(call + std::to_string(nth));
        if (!hasFailed) {
          break;
        }
      }
    }
    EXPECT_GT(failed, 5);
    world.messages.clear();
    Run(c.action);
    EXPECT_EQ(RunIn(MSIRUNMODE_SCHEDULED, c.action).find("***"), std::string::npos) << LogText();
    EXPECT_EQ(Ticks(kProgressAddition), Ticks(kProgressIncrement));
    EXPECT_GT(Ticks(kProgressIncrement), kTicksPerUnit);
    for (const auto &[path, text] : c.after) {
      EXPECT_EQ(Text(path), text) << path;
    }
    RunIn(MSIRUNMODE_COMMIT, c.action);
    EXPECT_TRUE(world.Find("C:\\temp\\zqvsave").node->entries.empty());
    const std::string after = Snapshot();
    EXPECT_NE(RunIn(MSIRUNMODE_ROLLBACK, c.action).find("Nothing to put back\n"), std::string::npos);
    EXPECT_EQ(Snapshot(), after);
  }
  // The last link file takes its folders with it, and comes back with them.
  world.Remove("C:\\qv");
  Write({{links + "it_it.link", "old"}});
  world.features = {{"docs_it_it_eclipse", {INSTALLSTATE_LOCAL, INSTALLSTATE_ABSENT}}};
  const std::string before = Snapshot();
  Run(iwiReconcileEclipseLinkFiles);
  RunIn(MSIRUNMODE_SCHEDULED, iwiReconcileEclipseLinkFiles);
  EXPECT_FALSE(world.Exists("C:\\qv\\eclipse"));
  RunIn(MSIRUNMODE_ROLLBACK, iwiReconcileEclipseLinkFiles);
  EXPECT_EQ(Snapshot(), before);
}

TEST_F(SideTest, AListNamesNothingElsewhere) {
  world.MakeJunction("C:\\qv\\link", "C:\\other");
  Write("C:\\other\\x=x|C:\\qv\\keep=k|C:\\x=x|C:\\temp\\zqvsave\\links\\0001.sav=s");
  const std::string before = Snapshot();
  for (const char *line : {"+..\\x", "+link\\x", "*link\\x", "=1 32 link\\x", "=1 32 ..\\x", "=9 32 keep", "=keep", "+",
                           "", "=1 32 C:\\x", "\x01", "?keep", "=99999999999999 1 keep"}) {
    world.WriteFile("C:\\temp\\zqvsave\\links\\list.txt", line + "\n"s);
    EXPECT_NE(RunIn(MSIRUNMODE_ROLLBACK, iwiReconcileEclipseLinkFiles, 1603).find("***"), std::string::npos) << line;
    EXPECT_EQ(Snapshot(), before) << line;
    EXPECT_TRUE(world.Exists("C:\\temp\\zqvsave\\links\\0001.sav"));
  }
  world.MakeJunction("C:\\qv\\eclipse", "C:\\other");
  world.MakeJunction("C:\\qv\\licenses", "C:\\other");
  Write("D:\\media\\licenses\\x=new|C:\\other\\links\\zqv_de_de.link=d|C:\\other\\zqvfiles.txt=x\r\n");
  const std::string linked = Snapshot();
  for (EntryPoint action : {iwiReconcileEclipseLinkFiles, iwiCopyLicenseFile, iwiInstallVlsm}) {
    Run(action);
    EXPECT_NE(RunIn(MSIRUNMODE_SCHEDULED, action, 1603).find("***"), std::string::npos) << LogText();
    EXPECT_EQ(Snapshot(), linked);
    Set("ZQVREMOVE=1");
    Run(action);
    EXPECT_EQ(Stacked(), "");
    Set("ZQVREMOVE=0");
  }
}

TEST_F(SideTest, ARemovalTakesAwayWhatWasWrittenAndNothingElse) {
  Write(
      "C:\\qv\\eclipse\\links\\zqv_fr_fr.link=l|C:\\qv\\eclipse\\links\\own.link=o|C:\\qv\\licenses\\own=o|"
      "C:\\qv\\licenses\\a.txt=a|C:\\qv\\licenses\\sub\\b=b|C:\\qv\\licenses\\sig\\a.sig=s|C:\\qv\\x=x|"
      "C:\\qv\\licenses\\zqvfiles.txt=a.txt\r\nsub\\b\r\ngone\r\n..\\x\r\nsub\\..\\..\\x\r\n|"
      "C:\\qv\\licenses\\sig\\zqvfiles.txt=A.SIG\n");
  const std::tuple<EntryPoint, std::string> cases[] = {
      {iwiReconcileEclipseLinkFiles,
       "Base_base C:\\qv\\eclipse\\links\\zqv_fr_fr.link 2\nBase_base C:\\qv\\eclipse\\links\\ 2\nBase_base "
       "C:\\qv\\eclipse\\ 2\n"},
      {iwiInstallVlsm,
       "Base_base C:\\qv\\licenses\\sig\\A.SIG 2\nBase_base C:\\qv\\licenses\\sig\\zqvfiles.txt 2\nBase_base "
       "C:\\qv\\licenses\\sig\\ 2\n"},
      {iwiCopyLicenseFile,
       "Base_base C:\\qv\\licenses\\a.txt 2\nBase_base C:\\qv\\licenses\\sub\\b 2\nBase_base "
       "C:\\qv\\licenses\\zqvfiles.txt 2\n"
       "Base_base C:\\qv\\licenses\\sub\\ 2\nBase_base C:\\qv\\licenses\\ 2\n"}};
  const std::string before = Snapshot();
  for (const auto &[action, stacked] : cases) {
    Set("ZQVREMOVE=1|ZQVSOURCE=");
    Run(action);
    EXPECT_EQ(Stacked(), stacked);
    RunIn(MSIRUNMODE_SCHEDULED, action);
    EXPECT_EQ(Snapshot(), before);
    Set("ZQVPGMFOLDER=C:\\");
    EXPECT_NE(Run(action, 1603).find("***Invalid folder 'C:\\' in 'ZQVPGMFOLDER'\n"), std::string::npos);
    Set("ZQVPGMFOLDER=C:\\qv|ProgramFilesFolder=C:\\qv");
    Run(action);
    EXPECT_EQ(Stacked(), "");
    Set("ProgramFilesFolder=");
  }
}

TEST_F(SideTest, ALicenceTextArrivesByteForByte) {
  const std::string japanese = "\x83\x5c\x83\x5c"s, russian = "\xcb\xe8\xf6\xe5\xed\xe7\xe8\xff"s,
                    chinese = "\xd0\xed\x81\x7c"s;
  const std::string folder = "D:\\media\\licenses\\";
  Write({{folder + "en_US.txt", "English\r\n"}, {folder + "ja_JP.txt", japanese}, {folder + "ru_RU.txt", russian}});
  Write({{folder + "zh_CN.txt", chinese}, {folder + "de_DE.txt", "Li\0zenz"s}, {folder + "it_IT.txt", ""}});
  const std::tuple<const char *, std::string, std::string> cases[] = {
      {"ja_JP", japanese, "set to 4 bytes of '" + folder + "ja_JP.txt'\n"},
      {"ru_RU", russian, "set to 8 bytes of '" + folder + "ru_RU.txt'\n"},
      {"zh_CN", chinese, "set to 4 bytes"},
      {"de_DE", "Li", "set to 2 bytes"},
      {"it_IT", "", "set to 0 bytes"},
      {"fr_FR", "English\r\n", "No licence '" + folder + "fr_FR.txt'\n"},
      {"..\\x", "English\r\n", "***'..\\x' in 'ZQVLANGUAGELIC' is no language\n"}};
  for (const auto &[language, text, line] : cases) {
    const std::string log = (Set({{"ZQVLANGUAGELIC", language}}), Run(iwiCopyLicenseText));
    EXPECT_EQ(world.properties["ZQVLICENSETEXT"], text);
    EXPECT_NE(log.find(line), std::string::npos) << log;
    EXPECT_EQ(log.find("value set to '" + text), std::string::npos);
  }
  std::string longText(31999, 'x');
  world.WriteFile(folder + "ja_JP.txt", longText + japanese);
  Set("ZQVLANGUAGELIC=ja_JP");
  Run(iwiCopyLicenseText);
  EXPECT_EQ(world.properties["ZQVLICENSETEXT"], longText);
  world.Remove("D:\\media");
  EXPECT_NE(Run(iwiCopyLicenseText).find("No text of the licence to show\n"), std::string::npos);
  EXPECT_EQ(Values({"ZQVLICENSETEXT"}), "|");
  ExpectRun(iwiCopyLicenseText, 1603, "ZQVLICENSEPATH=..\\x", {"***Invalid folder '..\\x' in 'ZQVLICENSEPATH'\n"});
  const std::tuple<std::string, const char *, std::size_t, std::size_t> cuts[] = {
      {japanese, "ja_JP", 3, 2},        {japanese, "ja_JP", 4, 4}, {"\xb1\xb2\xb3"s, "ja_JP", 2, 2},
      {"\xb1\xb2\xb3"s, "ko_KR", 1, 0}, {chinese, "zh_TW", 3, 2},  {russian, "ru_RU", 3, 3},
      {"a" + chinese, "zh_CN", 2, 1}};
  for (const auto &[text, language, most, length] : cuts) {
    EXPECT_EQ(LengthCutTo(text, language, most), length) << language << most;
  }
}

TEST_F(SideTest, TheLicenceMustBeAcceptedWhereNobodyAsks) {
  world.WriteFile("C:\\temp\\r.ini", "[Response]\nAgreeToLicense=YES\n");
  const std::string bad = "***AGREETOLICENSE value '";
  struct Case {
    const char *given;
    int mode;
    UINT result;
    const char *agreed;
    std::string line;
  };
  const Case cases[] = {{"Installed=|AGREETOLICENSE=yes", -1, 0, "Yes", "AgreeToLicense' value set to 'Yes'"},
                        {"USEINI=C:\\temp\\r.ini", -1, 0, "Yes", "AgreeToLicense' value set to 'Yes'"},
                        {"AGREETOLICENSE=1|UILevel=3", -1, 0, "Yes", "AgreeToLicense' value set to 'Yes'"},
                        {"", -1, 1603, "", bad + "' not acceptable\n"},
                        {"AGREETOLICENSE=no", -1, 1603, "", bad + "no' not acceptable\n"},
                        {"AGREETOLICENSE=maybe|UILevel=4", -1, 1603, "", bad + "maybe' not acceptable\n"},
                        {"UILevel=5", -1, 0, "", "The dialogs ask about the licence\n"},
                        {"Installed=1", -1, 0, "", "the licence is not asked about\n"},
                        {"", MSIRUNMODE_ADMIN, 0, "", "the licence is not asked about\n"}};
  for (const Case &c : cases) {
    Set("Installed=|AGREETOLICENSE=|USEINI=|UILevel=2|AgreeToLicense=");
    world.boxes.clear();
    world.modes = {c.mode};
    ExpectRun(iwiCheckLicenseAgree, c.result, c.given, {c.line});
    EXPECT_EQ(Values({"AgreeToLicense"}), c.agreed + "|"s);
    EXPECT_EQ(
        LogText().find("To install silently, accept the licence: set AGREETOLICENSE to yes.") != std::string::npos,
        c.result != 0);
    EXPECT_EQ(world.boxes.size(), c.result != 0 && world.properties["UILevel"] != "2");
  }
}

TEST_F(SideTest, FilesBesideThePackageAndTablesAreCopied) {
  Write(
      "D:\\media\\setup.exe=s|D:\\media\\1031.mst=m|D:\\media\\readme_de.txt=r|D:\\media\\q.msi=q|"
      "D:\\media\\licenses\\sub\\l=l|D:\\old\\conv\\a.tbl=a|D:\\old\\conv\\b.txt=b|C:\\temp\\zqvsave\\conv\\x=x");
  world.modes = {MSIRUNMODE_ADMIN};
  Set("TARGETDIR=C:\\admin");
  Run(iwiDirectCopyAdminFiles);
  EXPECT_EQ(Text("C:\\admin\\setup.exe") + Text("C:\\admin\\1031.mst") + Text("C:\\admin\\readme_de.txt") +
                Text("C:\\admin\\licenses\\sub\\l") + Text("C:\\admin\\q.msi"),
            "smrlnone");
  ExpectRun(iwiDirectCopyAdminFiles, 0, "TARGETDIR=d:\\MEDIA", {"nothing to copy\n"});
  ExpectRun(iwiDirectCopyAdminFiles, 1603, "TARGETDIR=media", {"***Invalid folder 'media\\' in 'TARGETDIR'\n"});
  world.held.insert("C:\\admin\\setup.exe");
  ExpectRun(iwiDirectCopyAdminFiles, 1603, "TARGETDIR=C:\\admin", {"***Error 32 copying 'setup.exe'\n"});
  world.modes = {};
  ExpectRun(iwiDirectCopyAdminFiles, 0, "", {"No administrative installation; nothing to copy\n"});

  Set("ZQVPREVDAT=D:\\old");
  Run(iwiDirectBackupCcsid);
  EXPECT_FALSE(world.Exists("C:\\temp\\zqvsave\\conv"));
  RunIn(MSIRUNMODE_SCHEDULED, iwiDirectBackupCcsid);
  EXPECT_EQ(Text("C:\\temp\\zqvsave\\conv\\a.tbl") + Text("C:\\temp\\zqvsave\\conv\\b.txt"), "anone");
  EXPECT_EQ(Ticks(kProgressAddition) + Ticks(kProgressIncrement), 2 * kTicksPerUnit);
  Fail("CopyFileExA", 5);
  RunIn(MSIRUNMODE_SCHEDULED, iwiDirectBackupCcsid, 1603);
  Fail("", 0);
  Set("ZQVPREVDAT=");
  EXPECT_NE(Run(iwiDirectBackupCcsid).find("No earlier conversion tables\n"), std::string::npos);
}

TEST_F(SideTest, APathIsAValueOfJavasProperties) {
  const std::tuple<unsigned, std::string, std::string> cases[] = {
      {1252, "C:\\p q\\#a!b=c", "C\\:\\\\p q\\\\\\#a\\!b\\=c"},
      {1252, "  a ~\x7f\t", "\\  a ~\\u007F\\u0009"},
      {1252, "\xfc\xdf", "\\u00FC\\u00DF"},
      {932, "C:\\\x83\x5c\\x", "C\\:\\\\\\u365C\\\\x"},
      {1252, "", ""}};
  for (const auto &[page, value, text] : cases) {
    World::codePage = page;
    EXPECT_EQ(PropertiesValue(value), text);
  }
  World::codePage = 1252;
}

}  // namespace
