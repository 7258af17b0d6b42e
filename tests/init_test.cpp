#include <cstdio>
#include <sstream>

#include "support.h"

/// Primary initialisation.
namespace {

constexpr char kUi[] = "ZQV__setup_language";
constexpr char kServer[] = "{8D1C5EA1-A4C5-4967-97FA-77FE6D4B5EA7}";
constexpr char kClient[] = "{5A8B5D80-6DCC-4317-9922-99EC0093BF24}";
constexpr char kTest[] = "{62F00881-AC47-458F-BF38-2B84B38DBA50}";
const std::string kVersionKey = "hklm\\Software\\Korvex\\QVSeries\\CurrentVersion";

class InitTest : public LibraryTest {
 protected:
  InitTest() { Restart(); }

  /// A new world: the server's package with a German transform, nothing installed.
  void Restart() {
    Unload();
    world = World();
    world.properties = {{"UpgradeCode", kServer},
                        {"ProductVersion", "06.00.2"},
                        {"TempFolder", "C:\\temp\\"},
                        {"SystemLanguageID", "1033"},
                        {"UILevel", "5"},
                        {"VersionNT", "502"}};
    world.MakeFolder("C:\\temp");
    world.created = 133541078400000000;  // 5 March 2024, 10:24
    world.packageCode = "{CODE}";
    world.tables["UIText"] = {{"Key", "Text"}, {{"Other", "x"}, {kUi, "German"}}};
    world.tables["Binary"].rows = {{"zqviwiln.dll", Bytes(5, 1)}};
    for (const char letter : std::string("abfghijkrstz")) {
      world.tables["Binary"].rows.push_back({std::string("zqvirc") + letter + "n.dll", Bytes(3, 1)});
    }
    for (const UINT id : {406, 613, 695, 2001, 2002, 2003, 2004, 2005, 2031, 2035, 2053, 2054, 2092}) {
      world.modules["C:\\temp\\zqvl0001.dll"].strings[id] = "<" + std::to_string(id) + " %s%d>";
    }
    world.modules["C:\\temp\\zqvl0001.dll"].strings[2034] = "<2034 %1>";
    LoadInSession();
  }

  using Properties = std::map<std::string, std::string>;

  /// Runs the action in a new world that has these properties too.
  UINT Run(const Properties &given = {}) {
    for (const auto &[name, value] : given) {
      world.properties[name] = value;
    }
    return iwiInstallInitPri(kSession);
  }
  void Expect(const Properties &expected) {
    for (const auto &[name, value] : expected) {
      EXPECT_EQ(world.properties.count(name) != 0 ? world.properties[name] : "", value) << name << '\n' << LogText();
    }
  }
  std::string Box() {
    EXPECT_TRUE(world.boxes.empty() || world.boxes.back().type == MB_ICONERROR);
    return world.boxes.empty() ? "" : world.boxes.back().text;
  }
};

TEST_F(InitTest, AServerIsInitialised) {
  world.relatedProducts[kServer] = {"{P}", "{Q}", "{R}"};
  world.relatedProducts[kClient] = {"{S}"};
  world.productStates = {{"{P}", INSTALLSTATE_DEFAULT}, {"{Q}", INSTALLSTATE_BADCONFIG}, {"{S}", INSTALLSTATE_LOCAL}};
  world.WriteFile("C:\\temp\\zqvcancl.txt", "");
  EXPECT_EQ(Run({{"REMOVE", "All"}, {"KEEPQMDATA", "DELETE"}, {"KEEPWEBDATA", "DELETE"}}), 0u);
  std::printf("installer calls of a whole initialisation:");
  for (const auto &[name, count] : world.callCount) {
    std::printf(name.starts_with("Msi") ? " %s %d" : "", name.c_str(), count);
  }
  std::printf("\n");
  std::string reads, sets;
  for (const std::string &line : world.installerLog) {
    const std::size_t at = line.find("Property '"), end = line.find('\'', at + 10);
    const bool set = line.find("value set to", end) != std::string::npos;
    if (at != std::string::npos) {
      (set ? sets : reads) += line.substr(at + 10, end - at - 10) + (set ? "=" + line.substr(end + 15) + "\n" : " ");
    }
  }
  EXPECT_EQ(reads,
            "ProductName ZQVEXTCA60000 MsiNTProductType UpgradeCode ProductVersion Installed ZQVTEMP TempFolder "
            "SystemLanguageID "
            "ZQVTEMPFILENUM ZQVLICENSETYPE ProductVersion PATCH ZQVCLIENT ZQVPRODUCT VersionNT Installed HIGHCONTRAST "
            "USEINI ZQVHIGHCONTRAST ZQVHIGHCONTRAST USERCHOICE ONLYINI SAVEINI Installed UILevel AGREETOLICENSE "
            "ZQVCHECKMSCS ZQVCHECKPUBSUB KEEPQMDATA KEEPWEBDATA REMOVE SAVEINI REINSTALLMODE VersionNT ADDLOCAL REMOVE "
            "ADDSOURCE ADDDEFAULT REINSTALL ADVERTISE WIZPARMFILE ZQVTEMPFILENUM STARTSERVICE STARTTASKBAR "
            "ZQVSERVICESHIPLEVEL ");
  EXPECT_EQ(sets,
            "ZQVBUILDDATE='Packaged on Mar 05 2024 at 10:24; version 1.231.1.7'\nZQVBUILDTIME='133541078400000000'\n"
            "ZQVPACKAGECODE='{CODE}'\nZQVTEMPFILENUM=''\nZQVPRODUCT='server'\nZQVTEMP='C:\\temp'\n"
            "ZQVSYSTEMLANGUAGECODE='en_US'\nZQVLANGUAGELIC='en_US'\nZQVTEMPFILENUM='0001'\nZQVLANGUAGECODE='g'\n"
            "ZQVLANGUAGE='German'\nZQVVERSION='6'\nZQVRELEASE='0'\nZQVSETUPTITLE='<2001 6.0%d>'\n"
            "ZQVSETHIGHCONTRAST=''\nZQVMIGRATE=''\nZQVUSERCHOICE='1'\nSAVEINI='C:\\temp\\QVSeries.ini'\nALLUSERS='1'\n"
            "ZQVDISKFOLDERNAME='Vantrel QV'\nZQVLEAVEQMDATAINSTALL='delete'\nZQVLEAVEQMDATAREMOVE='delete'\n"
            "ZQVLEAVEWEBDATAINSTALL='keep'\nZQVREMOVE='1'\nZQVREINSTALLOPTIONS='refresh'\nZQVQVISRUNNING=''\n"
            "ZQVPERFMONISRUNNING=''\nZQVPRODUCTPREREQ='0'\nZQVENDUI='0'\nZQVSNAPSERVICES='<695 %s%d>'\n"
            "ZQVSNAPEXPLORER='<613 %s%d>'\nZQVSTARTFOLDER='<406 %s%d>'\nREINSTALLMODE='amus'\nZQVSTARTSERVICE=''\n"
            "ZQVSTARTTASKBAR=''\nZQVSERVICESHIPLEVEL='0.0'\nZQVVRMF='6.0.0.0'\nZQVSERVICELEVELMESSAGE='<2092 %s%d>'\n"
            "ZQVLICENSEPATH='licenses'\n");
  ExpectInLog(
      {"Pri: Windows version 5.2.3790 platform 2 'Service Pack 2'\niwiInstallInitPri: Service pack 2.0 reserved "
       "0x0003\n",
       "Pri: Build Time is '133541078400000000'\n",
       "Pri: Product {P} (Server) state is INSTALLSTATE_DEFAULT\niwiInstallInitPri: ***Product {Q} (Server) "
       "state is INSTALLSTATE_BADCONFIG\niwiInstallInitPri: Product {R} (Server) state is INSTALLSTATE_UNKNOWN\n"
       "iwiInstallInitPri: ***Product {S} (Client) state is 00000003\n",
       "Pri: UI text key 'ZQV__setup_language': 'German'\n", "Pri: No service applied\n"});
  std::size_t at = 0;  // the sections without a property, each between its neighbours
  std::istringstream order(
      ": Windows version|'MsiNTProductType'|Build Time|'ZQVPRODUCT'|: Product {P}|Product {S}|'ZQVTEMP'|"
      "'SystemLanguageID'|: UI text key|Unpacking binary Name: 'zqvircgn.dll'|'ZQVLANGUAGECODE'|"
      "'ZQVUSERCHOICE'|Deleted file: 'C:\\temp\\zqvcancl.txt'|'ONLYINI'|'REINSTALLMODE'|'WIZPARMFILE'|"
      "Unpacking binary Name: 'zqviwiln.dll'|'STARTSERVICE'|'STARTTASKBAR'|: No service applied|"
      "'ZQVSERVICESHIPLEVEL'|");
  for (std::string text; std::getline(order, text, '|');) {
    at = LogText().find(text, at);
    EXPECT_NE(at, std::string::npos) << text << " comes too early";
  }
  EXPECT_EQ(world.ReadFile("C:\\temp\\zqvl0001.dll")->size() + world.ReadFile("C:\\temp\\zqvg0001.dll")->size(), 8u);
  EXPECT_EQ(world.ReadFile("C:\\temp\\QVSeries.ini"), "");
  EXPECT_FALSE(world.Exists("C:\\temp\\zqvcancl.txt"));
  EXPECT_EQ(Box(), "");
}

TEST_F(InitTest, ClientsAndAdministrativeInstallations) {
  EXPECT_EQ(Run({{"UpgradeCode", "{5a8b5d80-6DCC-4317-9922-99EC0093BF24}"}, {"STARTSERVICE", "1"}}), 0u);
  Expect(
      {{"ZQVPRODUCT", "client"}, {"ZQVSETUPTITLE", "<2004 6.0%d>"}, {"ZQVSNAPSERVICES", ""}, {"ZQVSTARTSERVICE", ""}});
  Restart();
  world.modes = {MSIRUNMODE_ADMIN};
  EXPECT_EQ(Run({{"UpgradeCode", "{}"}, {"PATCH", "x"}, {"STARTTASKBAR", "1"}, {"LAUNCHWIZ", "1"}}), 0u);
  Expect(
      {{"ZQVPRODUCT", ""}, {"ZQVSETUPTITLE", "<2005 6.0%d>"}, {"LAUNCHWIZ", "0"}, {"ZQVSNAPSERVICES", "<695 %s%d>"}});
  Expect({{"ZQVSTARTFOLDER", ""}, {"ZQVREINSTALLOPTIONS", ""}, {"REINSTALLMODE", ""}, {"ZQVSTARTTASKBAR", ""}});
  EXPECT_FALSE(world.Exists("C:\\temp\\QVSeries.ini"));
  ExpectInLog({"***Unknown product\n"});
}

TEST_F(InitTest, WhatIsInstalledAlready) {
  const std::string program = "C:\\qv\\bin\\zqvmtbrn.exe";
  const auto install = [&] {
    Restart();
    for (const auto &[name, value] : {std::pair{"VRMF", "5.3.0.1"}, {"PgmFolder", "C:\\qv\\"}}) {
      world.registry[kVersionKey][name] = RegistryValue::Text(value);
    }
    world.WriteFile(program, "");
    world.held = {program};
    world.services["QVSeriesServices"].state = 4;
  };
  install();
  EXPECT_EQ(Run({{"VersionNT", "400"}}), 0u);
  Expect({{"ZQVMIGRATE", "1"}, {"ZQVSTARTSERVICE", "1"}, {"ZQVSTARTTASKBAR", "1"}, {"REINSTALLMODE", "omus"}});
  ExpectInLog({"Registry VRMF is '5.3.0.1' (5.3.0.1)\n"});
  const std::size_t level = LogText().find("Previous installation level 1 ('5.3.0.1'), program folder 'C:\\qv'");
  EXPECT_NE(level, std::string::npos);
  EXPECT_EQ(LogText().find("Previous installation level", level + 1), std::string::npos);
  install();
  world.held.clear();
  world.services["QVSeriesServices"].state = 1;
  EXPECT_EQ(Run({{"REINSTALLMODE", "o"}}), 0u);
  Expect({{"ZQVSTARTSERVICE", ""}, {"ZQVSTARTTASKBAR", ""}, {"REINSTALLMODE", "o"}});
  install();
  EXPECT_EQ(Run({{"STARTSERVICE", "NO"}, {"STARTTASKBAR", "maybe"}, {"USERCHOICE", "0"}}), 0u);
  Expect({{"ZQVSTARTSERVICE", ""}, {"ZQVSTARTTASKBAR", "1"}, {"ZQVUSERCHOICE", ""}});
}

TEST_F(InitTest, LanguagesOfTheSystemAndTheInstallation) {
  using Case = std::tuple<const char *, const char *, const char *, const char *, const char *, UINT, const char *>;
  for (const auto &[system, text, longCode, letter, name, result, upgradeCode] :
       {Case{"1031", "", "de_DE", "g", "German", 1603, kServer},
        {"x", nullptr, "en_US", "a", "English", 1603, kServer},  // no row
        {"20490", "Q", "es_ES", "a", "English", 0, kServer},
        {"0", "h", "en_US", "h", "Hungarian", 0, kServer},
        {"1045", nullptr, "pl_PL", "a", "English", 1603, kServer},
        {"4100", " ", "zh_CN", "a", "English", 0, kServer},
        {"1031", nullptr, "de_DE", "a", "English", 0, kTest},
        {"1042", "TW", "ko_KR", "t", "Traditional Chinese", 0, kServer},
        {"1041", "r", "ja_JP", "a", "English", 0, kTest}}) {
    Restart();
    world.tables["UIText"].rows = {{Cell{}, "g"}, {"zqv__SETUP_language", "g"}};
    if (text != nullptr) {
      world.tables["UIText"].rows.insert(world.tables["UIText"].rows.end(), {{kUi, text}, {kUi, "j"}});
    }
    EXPECT_EQ(Run({{"SystemLanguageID", system}, {"UpgradeCode", upgradeCode}}), result) << system;
    Expect({{"ZQVSYSTEMLANGUAGECODE", longCode}, {"ZQVLANGUAGECODE", letter}, {"ZQVLANGUAGE", name}});
    EXPECT_EQ(Box(), result == 0 ? "" : "<2031 %s%d>");
  }
  ExpectInLog({"TEST EXECUTION\n", "Written 3 bytes to 'C:\\temp\\zqvl0001.dll'\n"});
  Restart();
  world.tables["UIText"].rows = std::vector<Row>(10000, {"Other", "x"});
  world.modules.clear();
  EXPECT_EQ(Run(), 1603u);
  EXPECT_EQ(Box(), "No installation language specified. Use the TRANSFORMS property. (ZQV4732)");
  ExpectInLog({"***Can't find key 'ZQV__setup_language' in UIText table. No UI language transform.\n"});
}

TEST_F(InitTest, AFailedMessageLibraryDecidesTheResult) {
  world.tables["Binary"].rows.clear();
  EXPECT_EQ(Run(), 1603u);
  Expect({{"ZQVLICENSEPATH", "licenses"}});
  Restart();
  world.created.reset();
  world.modules.clear();
  EXPECT_EQ(Run({{"ZQVLICENSETYPE", "Trial"}}), 0u);
  Expect({{"ZQVSETUPTITLE", "Vantrel QV V6.0 Setup"}, {"ZQVSTARTFOLDER", ""}, {"ZQVPACKAGECODE", "{CODE}"}});
  Expect({{"ZQVBUILDDATE", "Packaged* on Aug  1 2007 at 23:17:22; version 1.231.1.7"}, {"ZQVBUILDTIME", ""}});
  Restart();
  world.created = ~std::uint64_t{0};
  EXPECT_EQ(Run(), 0u);
  Expect({{"ZQVBUILDDATE", "Packaged on 0 00 0000 at 00:00; version 1.231.1.7"},
          {"ZQVBUILDTIME", "18446744073709551615"}});
  ExpectInLog({"***FileTimeToSystemTime() failed (87)\n"});
  // A second run in the same load speaks the new language.
  world.tables["UIText"].rows = {{kUi, "f"}};
  world.modules["C:\\temp\\zqvl0002.dll"].strings[2001] = "%s deux";
  EXPECT_EQ(Run(), 0u);
  Expect({{"ZQVSETUPTITLE", "6.0 deux"}, {"ZQVLANGUAGECODE", "f"}});
}

TEST_F(InitTest, HighContrast) {
  const char *const off = "contrast mode is off\n", *const none = "Can't find QV registry high contrast",
                    *const set = "Setting high contrast mode because of text colour\n";
  using Case = std::tuple<const char *, const char *, bool, DWORD, const char *, const char *, const char *>;
  for (const auto &[wanted, registry, system, colour, published, choice, line] :
       {Case{"YES", "0", false, 0, "1", "1", ""}, Case{"maybe", "0", false, 0, "1", "", ""},
        Case{"No", "1", true, 0, "0", "0", ""}, Case{"", "1x", false, 0, "1", "", "contrast flag is '1x'\n"},
        Case{"", "0", true, 0, "1", "", "Accessibility high contrast mode is on\n"},
        Case{"", nullptr, false, 0x7F7F80, "", "", none}, Case{"", "", true, 0, "1", "", "flag is ''\n"},
        Case{"", nullptr, false, 0x7F8080, "1", "", set}, Case{"", "0", false, 0x030201, "", "", off}}) {
    Restart();
    if (registry != nullptr) {
      world.registry[kVersionKey]["HighContrastMode"] = RegistryValue::Text(registry);
    }
    world.highContrast = system;
    world.textColour = colour;
    EXPECT_EQ(Run({{"HIGHCONTRAST", wanted}}), 0u);
    Expect({{"ZQVHIGHCONTRAST", published}, {"ZQVSETHIGHCONTRAST", choice}});
    ExpectInLog({line});
    EXPECT_EQ(LogText().find("QV registry high contrast") == std::string::npos, *wanted != '\0');
  }
  ExpectInLog({"Text colour is R:1 G:2 B:3\n"});
  Restart();
  world.textColour = 0xFFFFFF;
  Fail("SystemParametersInfoA", 87);
  EXPECT_EQ(Run(), 0u);
  Expect({{"ZQVHIGHCONTRAST", "1"}});  // for the text's colour
  ExpectInLog({"RC 87 from SystemParametersInfo(SPI_GETHIGHCONTRAST)\n"});
}

TEST_F(InitTest, VersionsAndServiceLevels) {
  for (const auto &[version, level, vrmf, line] :
       {std::tuple{"6", " 05 . 010", "6.0.5.10", ""},
        {"6.", "A.1", "6.0.A.1", ""},
        {"a.b", "", "0.0.0.0", ""},
        {"00.00", "00.000", "0.0.0.0", ""},
        {"010.a203.9", "7.8", "10.203.7.8", ""},
        {"6.0", "99999999999999999999.0", "6.0.99999999999999999999.0", ""},
        {"6.0", "1A.1", "", "***Modification Level '1A' must be all numeric or all alphabetic\n"},
        {"6.0", "1.2.3", "", "***Invalid Modification.Fix Level 'ZQVSERVICESHIPLEVEL'\n"},
        {"6.0", "1.x", "", "***Fix Level 'x' must be numeric\n"},
        {"6.0", "1.\xE4", "", "' must be numeric\n"},
        {"6.0", " ", "", "***Modification Level '' must be all"},
        {"6.0", "\xC4.1", "", "' must be all numeric or all alphabetic\n"}}) {
    Restart();
    EXPECT_EQ(Run({{"ProductVersion", version}, {"ZQVSERVICESHIPLEVEL", level}}), *vrmf == '\0' ? 1603u : 0u) << level;
    Expect({{"ZQVVRMF", vrmf}});
    ExpectInLog({line});
    EXPECT_EQ(LogText().find("***") == std::string::npos, *line == '\0');
  }
}

TEST_F(InitTest, EachReadHasItsLongestValue) {
  for (const auto &[length, names] :
       {std::pair<std::size_t, std::vector<const char *>>{64, {"ONLYINI"}},
        {260, {"MsiNTProductType", "UpgradeCode", "ProductVersion", "Installed", "SystemLanguageID", "ZQVLICENSETYPE"}},
        {260, {"PATCH", "ZQVCLIENT", "VersionNT", "SAVEINI", "UILevel", "KEEPWEBDATA", "REINSTALLMODE", "USEINI"}},
        {260, {"STARTSERVICE", "STARTTASKBAR", "ZQVSERVICESHIPLEVEL"}},
        {516, {"HIGHCONTRAST", "USERCHOICE", "AGREETOLICENSE", "ZQVCHECKMSCS", "ZQVCHECKPUBSUB", "KEEPQMDATA"}},
        {516, {"WIZPARMFILE"}},
        {2048, {"REMOVE", "ADDLOCAL", "ADDSOURCE", "ADDDEFAULT", "REINSTALL", "ADVERTISE"}}}) {
    for (const char *name : names) {
      ExpectLength(iwiInstallInitPri, name, length);
    }
  }
}

TEST_F(InitTest, EachLanguageIdentifierHasItsCodeAndLetter) {
  std::istringstream rows(
      "404 zh_TWt 804 zh_CNz c04 zh_CNz 1004 zh_CNz 407 de_DEg 807 de_DEg c07 de_DEg 1007 de_DEg 1407 de_DEg "
      "40c fr_FRf 80c fr_FRf c0c fr_FRf 100c fr_FRf 140c fr_FRf 180c fr_FRf 410 it_ITi 810 it_ITi 411 ja_JPj "
      "412 ko_KRk 812 ko_KRk 416 pt_BRb 419 ru_RUr 40e hu_HUh 406 da_DKa 40b fi_FIa 413 nl_NLa 813 nl_NLa "
      "414 no_NOa 814 no_NOa 415 pl_PLa 41d sv_SEa 81d sv_SEa 816 en_USa 540a en_USa 1c0c en_USa 0 en_USa");
  std::map<int, std::string> codes;
  for (std::string number, code; rows >> number >> code;) {
    codes[std::stoi(number, nullptr, 16)] = code;
  }
  for (int number = 0x40A; number <= 0x500A; number += 0x400) {
    codes[number] = "es_ESs";
  }
  world.tables["UIText"].rows = {{kUi, ""}};
  for (const auto &[number, code] : codes) {
    Reload();
    EXPECT_EQ(Run({{"SystemLanguageID", std::to_string(number)}}), 1603u);
    EXPECT_EQ(world.properties["ZQVSYSTEMLANGUAGECODE"] + world.properties["ZQVLANGUAGECODE"], code) << number;
  }
}

TEST_F(InitTest, WhatIsMissingAndWhatIsKept) {
  Fail("MsiGetSummaryInformationA", 1627);
  EXPECT_EQ(Run(), 0u);
  Expect({{"ZQVBUILDDATE", "Packaged* on Aug  1 2007 at 23:17:22; version 1.231.1.7"}, {"ZQVPACKAGECODE", ""}});
  Restart();
  EXPECT_EQ(Run({{"TempFolder", ""}}), 1603u);  // no temporary name, but the rest
  Expect({{"ZQVLANGUAGECODE", "g"}, {"ZQVLICENSEPATH", "licenses"}});
  Restart();
  world.MakeFolder("C:\\new");
  EXPECT_EQ(Run({{"REMOVE", "ALL"}}) + Run({{"REMOVE", ""}, {"ZQVTEMP", "C:\\new"}}), 0u);
  Expect({{"ZQVREMOVE", "1"}});  // read once a load; the folder each time
  EXPECT_TRUE(world.Exists("C:\\new\\zqvl0001.dll"));
  Restart();
  world.WriteFile("C:\\temp\\r.ini", "[Response]\nKEEPWEBDATA=delete\nKEEPQMDATA=delete\nSTARTSERVICE=1\n");
  EXPECT_EQ(Run({{"USEINI", "C:\\temp\\r.ini"}}), 0u);
  Expect({{"ZQVLEAVEWEBDATAINSTALL", "keep"}, {"ZQVLEAVEQMDATAINSTALL", "delete"}, {"ZQVSTARTSERVICE", ""}});
}

TEST_F(InitTest, WhatStopsAnInstallation) {
  world.registry[kVersionKey + "\\SupportPacs Applied\\MA0C"];
  EXPECT_EQ(Run({{"ZQVCHECKMSCS", "1"}, {"ZQVCHECKPUBSUB", "0"}}), 1603u);
  EXPECT_EQ(Box(), "<2054 %s%d>");
  ExpectInLog({"ServicePac MC74 (MSCS support) is not installed\n", "ServicePac MA0C (Pub/Sub) is installed\n"});
  Restart();
  EXPECT_EQ(Run({{"WIZPARMFILE", "\"C:\\no file\""}}), 1603u);
  EXPECT_EQ(Box(), "<2034 C:\\no file>");
  Restart();
  world.modules["C:\\temp\\zqvl0001.dll"].strings[2034] = "<2034 %s>";
  EXPECT_EQ(Run({{"WIZPARMFILE", "C:\\none"}}), 1603u);
  EXPECT_EQ(Box(), "<2034 C:\\none>");
  Restart();
  world.modules.clear();
  EXPECT_EQ(Run({{"WIZPARMFILE", "C:\\no"}}), 1603u);
  EXPECT_EQ(Box(), "Can't open file 'C:\\no'. (ZQV4734)");
  Restart();
  EXPECT_EQ(Run({{"ADDLOCAL", "Nothing"}}), 1603u);
  ExpectInLog({"***Stopping because of unknown features\n"});
  Restart();
  EXPECT_EQ(Run({{"ZQVLICENSETYPE", "Gift"}}), 1603u);
  ExpectInLog({"***Unknown licence type 'Gift'\n"});
  Restart();
  world.modules["C:\\temp\\zqvl0001.dll"].strings[2035] = "<2035 %1>";
  world.MakeFolder("C:\\new\\folder\\x.ini");
  EXPECT_EQ(Run({{"SAVEINI", "C:\\new\\folder\\x.ini"}, {"ZQVLICENSETYPE", "TRIAL"}, {"AGREETOLICENSE", "maybe"}}), 0u);
  EXPECT_EQ(Box(), "<2035 5>");
  Expect({{"ZQVSETUPTITLE", "<2002 6.0%d>"}, {"AgreeToLicense", ""}});
  ExpectInLog({"***AGREETOLICENSE value 'maybe' not acceptable\n"});
  Restart();
  EXPECT_EQ(Run({{"SAVEINI", " C:\\new\\a\\x.ini "},
                 {"ZQVLICENSETYPE", "trial"},
                 {"TRIALTOPROD", "1"},
                 {"AGREETOLICENSE", "YES"}}),
            0u);
  EXPECT_EQ(world.ReadFile("C:\\new\\a\\x.ini"), "");
  Expect({{"ZQVSETUPTITLE", "<2001 6.0%d>"}, {"AgreeToLicense", "Yes"}, {"SAVEINI", " C:\\new\\a\\x.ini "}});
}

}  // namespace
