#include "runtime/progress.h"
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

  /// What the RemoveFile table's rows would remove, a line each; forgets them.
  std::string Stacked() {
    std::string text;
    for (const Row &row : std::exchange(world.tables["RemoveFile"].rows, {})) {
      const std::string *name = std::get_if<std::string>(&row[2]);
      text += world.properties[std::get<std::string>(row[3])] + (name != nullptr ? *name : "") + "\n";
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

TEST_F(SideTest, FilesBesideThePackageAreCopied) {
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

}

}  // namespace
