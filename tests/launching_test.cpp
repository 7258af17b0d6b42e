#include "completion/launching/argument.h"
#include "support.h"

namespace {

using std::literals::operator""s;

/// An installation in folders with blanks, with a program for everything that is launched.
class LaunchingTest : public LibraryTest {
 protected:
  LaunchingTest() {
    Set("UILevel=5|ZQVENDUI=0|ZQVPGMFOLDER=C:\\p q\\|ZQVDATFOLDER=C:\\p q|VersionNT=501|ZQVPRODUCT=server|"
        "ARPREADME=C:\\p q\\readme.txt|WIZPARMFILE= \"C:\\a b\\w.ini\" |LAUNCHWIZ=1|ZQVREMOVE=0");
    for (const char *name : {"bin\\zqvmjpse.exe", "bin\\zqvtcert.exe", "bin\\zqvlpad.exe", "readme.txt",
                             "bin\\zqvsslwz.exe", "bin\\setqvscp.exe", "bin\\zqvmkdir.exe", "doc\\sslinfo.htm"}) {
      world.WriteFile("C:\\p q\\"s + name, "");
      world.programs["C:\\p q\\"s + name] = {};
    }
  }

  /// What is launched below C:\p q with these properties too: parameters and show command behind each; then all lines.
  std::string Launched(const std::string &given) {
    const auto before = world.properties;
    std::string text, log;
    for (EntryPoint action : {iwiTestAndLaunchConfig, iwiLaunchZqvtcert, iwiLaunchLaunchPad, iwiLaunchReadme,
                              iwiLaunchSSLMoreInfoHTML, iwiLaunchSSLStoreWizard, iwiLaunchSetqvscp}) {
      Set(given);
      log += Run(action);
    }
    world.properties = before;
    for (const Launch &launch : std::exchange(world.launched, {})) {
      text += launch.file.substr(std::size("C:\\p q")) + launch.parameters + " " + std::to_string(launch.show) + "|";
    }
    return text + "\n" + log;
  }
};

TEST(ArgumentTest, IsGivenBackWholeByTheProgramsParser) {
  World::codePage = 932;  // in which 83 5C is one character
  for (const auto &[value, quoted] :
       {std::pair("", R"("")"), std::pair(R"(C:\p q\)", R"("C:\p q\\")"), std::pair(R"(a\"b\\)", R"("a\\\"b\\\\")"),
        std::pair(R"("\\s\x)", R"("\"\\s\x")"), std::pair("\x83\\\\", "\"\x83\\\\\\\"")}) {
    EXPECT_EQ(QuotedArgument(value), quoted);
  }
  World::codePage = 1252;
}

TEST_F(LaunchingTest, WhatIsLaunchedHangsOnTheInstallation) {
  const std::string wizard = "bin\\zqvmjpse.exe", pad = "bin\\zqvlpad.exe 1|", both = pad + "readme.txt 1|";
  const std::string ssl = "doc\\sslinfo.htm 1|bin\\zqvsslwz.exe 1|bin\\setqvscp.exe 1|";
  const std::string rest = " 1|bin\\zqvtcert.exe 0|" + both + ssl;
  const std::tuple<const char *, std::string, const char *> cases[] = {
      {"", wizard + "\"C:\\a b\\w.ini\"" + rest, "zqvtcert.exe' ended; exit code 0x00000000\n"},
      {"WIZPARMFILE=|LAUNCHWIZ=", wizard + rest, "Launched OK\n"},
      {"LAUNCHWIZ=No", rest.substr(3), ": Not wanted; 'C:\\p q\\bin\\zqvmjpse.exe' is not launched\n"},
      {"UILevel=2", "", ": Silent installation; 'C:\\p q\\bin\\zqvlpad.exe' is not launched\n"},
      {"ZQVENDUI=1", "", ": Left to the dialogs; 'C:\\p q\\readme.txt' is not launched\n"},
      {"ZQVCLIENT=yes", both, ": Client-only installation; 'C:\\p q\\doc\\sslinfo.htm' is not launched\n"},
      {"ZQVPGMFOLDER=p q", "readme.txt 1|", "***'p q\\doc\\sslinfo.htm' is in no absolute folder;"},
      {"ZQVCLIENT=1|ARPREADME=\\readme.txt", pad, "***'\\readme.txt' is in no absolute folder; it is not launched\n"},
      {"ZQVCLIENT=1|ARPREADME=", pad, ": No value in 'ARPREADME'; nothing is launched\n"}};
  for (const auto &[given, launched, line] : cases) {
    const std::string seen = Launched(given);
    EXPECT_TRUE(seen.starts_with(launched + "\n") && seen.find(line) != std::string::npos) << given << " " << seen;
  }
  world.programs["C:\\p q\\bin\\zqvtcert.exe"].runtimeMs = 90001;
  ExpectRun(iwiLaunchZqvtcert, 0, "", {"zqvtcert.exe' timed out.\n"});
  EXPECT_NE(world.ReadFile("C:\\p q\\zqvmjpse.txt").value_or("").find("zqvmjpse.exe"), std::string::npos);
}

TEST_F(LaunchingTest, TheDataFoldersAreMadeOrTheInstallationFails) {
  Set("UILevel=2|ZQVENDUI=1");
  const std::string program = "C:\\p q\\bin\\zqvmkdir.exe";
  const std::tuple<const char *, const char *, DWORD, UINT, std::string> cases[] = {
      {"", "", 0, 0, "Launching process '" + program + "' '\"C:\\p q\\\\\"'; dir"},
      {"", "", 3, 1603, "***'" + program + "' ended with 3\n"},
      {"", "GetExitCodeProcess", 0, 1603, "***'" + program + "' ended with -1\n"},
      {"", "ShellExecuteExA", 0, 1603, "***'" + program + "' ended with -1\n"},
      {"ZQVPGMFOLDER=p", "", 0, 1603, "***'p\\bin\\zqvmkdir.exe' ended with -1\n"},
      {"ZQVDATFOLDER=", "", 0, 1603, "***Invalid folder '' in 'ZQVDATFOLDER'\n"},
      {"ZQVCLIENT=1", "", 3, 0, "No data folders to make\n"},
      {"ZQVREMOVE=1", "", 3, 0, "No data folders to make\n"}};
  for (const auto &[given, failing, exitCode, result, line] : cases) {
    const auto before = world.properties;
    world.programs[program].exitCode = exitCode;
    Set(given);
    const std::string quiet = Run(iwiLaunchZqvMkDir) + RunIn(MSIRUNMODE_ROLLBACK, iwiLaunchZqvMkDir);
    EXPECT_EQ(quiet.find("Launching"), std::string::npos);
    Fail(failing, 5);
    EXPECT_NE(RunIn(MSIRUNMODE_SCHEDULED, iwiLaunchZqvMkDir, result).find(line), std::string::npos) << LogText();
    world.properties = before;
  }
}

TEST_F(LaunchingTest, WhatIsDecidedIsPublished) {
  world.tables["File"].rows = {{"a", "readme.txt"}, {"b", "R~1|Readme_DE_de.txt"}, {"c", "readme_ja_JP.txt|x"}};
  const std::tuple<EntryPoint, const char *, const char *, const char *, std::string> cases[] = {
      {iwiSetARPREADME, "", "ZQVSYSTEMLANGUAGECODE=ja_JP", "ARPREADME", "C:\\p q\\readme.txt"},
      {iwiSetARPREADME, "", "ZQVSYSTEMLANGUAGECODE=de_DE", "ARPREADME", "C:\\p q\\readme_de_DE.txt"},
      {iwiSetARPREADME, "MsiViewExecute", "", "ARPREADME", "C:\\p q\\readme.txt"},
      {iwiSetARPREADME, "", "ZQVPGMFOLDER= |ARPREADME=own", "ARPREADME", "own"},
      {iwiSetLaunchWiz, "", "LAUNCHWIZ=no", "LAUNCHWIZ", "0"},
      {iwiSetLaunchWiz, "", "LAUNCHWIZ=", "LAUNCHWIZ", "1"},
      {iwiSetLaunchWiz, "", "ZQVCLIENT=1", "LAUNCHWIZ", "0"},
      {iwiSetZqvRemove, "", "REMOVE=all", "ZQVREMOVE", "1"}};
  for (const auto &[action, failing, given, property, value] : cases) {
    Fail(failing, 5);
    ExpectRun(action, 0, given);
    EXPECT_EQ(Values({property}), value + "|") << given;
  }
}

TEST_F(LaunchingTest, TheSplashWindowIsWaitedForAndALaterLevelTold) {
  for (const auto &[finds, line] :
       {std::pair(0, "Waited 0"), std::pair(3, "Waited 1"), std::pair(99, "out after 30")}) {
    world.windows["ZQVQVSeriesSplash"] = {finds, true};
    ExpectRun(iwiWaitForSplash, 0, "", {line + " seconds\n"s});
  }
  EXPECT_EQ(world.slept, 3 * 500 + 30000u);
  ExpectRun(iwiStopSplash, 0, "", {"Closing splash window"});
  const std::string text(515, 't'), installed = "Installed level '";
  for (const auto &[level, line] :
       {std::pair("6.0.2.1", "MB info: " + text), std::pair("6.0.2.0", installed + "6.0.2.0' is not above '6.0.2.0'"),
        std::pair("", ": No installed level in the registry"s)}) {
    world.registry["hklm\\Software\\Korvex\\QVSeries\\CurrentVersion"]["VRMF"] = RegistryValue::Text(level);
    ExpectRun(iwiDisplayApplyService, 0, {{"ZQVVRMF", "6.0.2.0"}, {"ZQVSERVICELEVELMESSAGE", text}}, {line + "\n"});
  }
  EXPECT_EQ(world.boxes.size(), 1u);
}

}  // namespace
