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
    world.properties =
        Properties("ProductVersion=06.00.2|TempFolder=C:\\temp\\|SystemLanguageID=1033|UILevel=5|VersionNT=502");
    world.properties["UpgradeCode"] = kServer;
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

  /// With these properties too, initialisation ends with this result, publishes these values and logs these texts.
  void ExpectInit(UINT result, const Properties &given = {}, const Properties &published = {},
                  std::initializer_list<std::string> texts = {}) {
    Set(given);
    EXPECT_EQ(iwiInstallInitPri(kSession), result) << LogText();
    for (const auto &[name, value] : published) {
      EXPECT_EQ(Values({name.c_str()}), value + "|") << name << '\n' << LogText();
    }
    ExpectInLog(texts);
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
  ExpectInit(0, "REMOVE=All|KEEPQMDATA=DELETE|KEEPWEBDATA=DELETE");
  std::string steps;  // each property that is read, those that are set with their values, and the other lines
  std::istringstream lines(TakeLog("iwiInstallInitPri"));
  for (std::string line; std::getline(lines, line);) {
    const std::size_t end = line.starts_with("Property '") ? line.find('\'', 10) : 0;
    const bool set = line.find("value set to", end) == end + 2;
    steps += (end == 0 ? line : line.substr(10, end - 10) + (set ? "=" + line.substr(end + 15) : "")) + "|";
  }
  EXPECT_EQ(steps,
            "Windows version 5.2.3790 platform 2 'Service Pack 2'|Service pack 2.0 reserved 0x0003|MsiNTProductType|"
            "ZQVBUILDDATE='Packaged on Mar 05 2024 at 10:24; version 1.231.1.7'|ZQVBUILDTIME='133541078400000000'|"
            "Build Time is '133541078400000000'|ZQVPACKAGECODE='{CODE}'|ZQVTEMPFILENUM=''|UpgradeCode|ProductVersion|"
            "ZQVPRODUCT='server'|Installed|Product {P} (Server) state is INSTALLSTATE_DEFAULT|"
            "***Product {Q} (Server) state is INSTALLSTATE_BADCONFIG|"
            "Product {R} (Server) state is INSTALLSTATE_UNKNOWN|***Product {S} (Client) state is 00000003|ZQVTEMP|"
            "TempFolder|ZQVTEMP='C:\\temp'|SystemLanguageID|ZQVSYSTEMLANGUAGECODE='en_US'|ZQVLANGUAGELIC='en_US'|"
            "UI text key 'ZQV__setup_language': 'German'|ZQVTEMPFILENUM|Created 'C:\\temp\\zqvl0001.dll'|"
            "ZQVTEMPFILENUM='0001'|Unpacking binary Name: 'zqvircgn.dll'|No component suffix|"
            "Written 3 bytes to 'C:\\temp\\zqvl0001.dll'|ZQVLANGUAGECODE='g'|ZQVLANGUAGE='German'|ZQVLICENSETYPE|"
            "ProductVersion|ZQVVERSION='6'|ZQVRELEASE='0'|PATCH|ZQVCLIENT|ZQVPRODUCT|VersionNT|Installed|"
            "Client-only installation: no|ZQVSETUPTITLE='<2001 6.0%d>'|HIGHCONTRAST|USEINI|"
            "Can't find QV registry high contrast flag|ZQVHIGHCONTRAST|"
            "Checking operating system for high contrast mode|Accessibility high contrast mode is off|"
            "ZQVHIGHCONTRAST|Text colour is R:0 G:0 B:0|ZQVSETHIGHCONTRAST=''|"
            "Previous installation level 0 (''), program folder '', data folder '', log folder ''|ZQVMIGRATE=''|"
            "USERCHOICE|ZQVUSERCHOICE='1'|Deleted file: 'C:\\temp\\zqvcancl.txt'|ONLYINI|SAVEINI|"
            "SAVEINI='C:\\temp\\QVSeries.ini'|Installed|UILevel|AGREETOLICENSE|ZQVCHECKMSCS|ZQVCHECKPUBSUB|"
            "ALLUSERS='1'|Type 2 product data is 'Vantrel QV' (version '0.0')|ZQVDISKFOLDERNAME='Vantrel QV'|"
            "KEEPQMDATA|ZQVLEAVEQMDATAINSTALL='delete'|ZQVLEAVEQMDATAREMOVE='delete'|KEEPWEBDATA|"
            "ZQVLEAVEWEBDATAINSTALL='keep'|REMOVE|ZQVREMOVE='1'|ZQVREINSTALLOPTIONS='refresh'|ZQVQVISRUNNING=''|"
            "ZQVPERFMONISRUNNING=''|ZQVPRODUCTPREREQ='0'|ZQVENDUI='0'|ZQVSNAPSERVICES='<695 %s%d>'|"
            "ZQVSNAPEXPLORER='<613 %s%d>'|ZQVSTARTFOLDER='<406 %s%d>'|SAVEINI|REINSTALLMODE|VersionNT|"
            "REINSTALLMODE='amus'|ADDLOCAL|REMOVE|ADDSOURCE|ADDDEFAULT|REINSTALL|ADVERTISE|WIZPARMFILE|"
            "ZQVTEMPFILENUM|Unpacking binary Name: 'zqviwiln.dll'|No component suffix|"
            "Written 5 bytes to 'C:\\temp\\zqvg0001.dll'|STARTSERVICE|Service 'KorvexQVSeries' not found|"
            "Service 'QVSeriesServices' not found|ZQVSTARTSERVICE=''|STARTTASKBAR|ZQVSTARTTASKBAR=''|"
            "No service applied|Latest maintenance level is '0.0'|RollBack value is ''|"
            "Previous maintenance level is '0.0'|Shipped maintenance level is '0.0'|ZQVSERVICESHIPLEVEL|"
            "ZQVSERVICESHIPLEVEL='0.0'|ZQVVRMF='6.0.0.0'|ZQVSERVICELEVELMESSAGE='<2092 %s%d>'|"
            "ZQVLICENSEPATH='licenses'|Freeing NLS library|Returning with rc 0|");
  EXPECT_EQ(world.ReadFile("C:\\temp\\zqvl0001.dll")->size() + world.ReadFile("C:\\temp\\zqvg0001.dll")->size(), 8u);
  EXPECT_EQ(world.ReadFile("C:\\temp\\QVSeries.ini"), "");
  EXPECT_FALSE(world.Exists("C:\\temp\\zqvcancl.txt"));
  EXPECT_EQ(Box(), "");
}

TEST_F(InitTest, ClientsAndAdministrativeInstallations) {
  ExpectInit(0, "UpgradeCode={5a8b5d80-6DCC-4317-9922-99EC0093BF24}|STARTSERVICE=1",
             "ZQVPRODUCT=client|ZQVSETUPTITLE=<2004 6.0%d>|ZQVSNAPSERVICES=|ZQVSTARTSERVICE=");
  Restart();
  world.modes = {MSIRUNMODE_ADMIN};
  ExpectInit(0, "UpgradeCode={}|PATCH=x|STARTTASKBAR=1|LAUNCHWIZ=1",
             "ZQVPRODUCT=|ZQVSETUPTITLE=<2005 6.0%d>|LAUNCHWIZ=0|ZQVSNAPSERVICES=<695 %s%d>|ZQVSTARTFOLDER=|"
             "ZQVREINSTALLOPTIONS=|REINSTALLMODE=|ZQVSTARTTASKBAR=",
             {"***Unknown product\n"});
  EXPECT_FALSE(world.Exists("C:\\temp\\QVSeries.ini"));
}

TEST_F(InitTest, WhatIsInstalledAlready) {
  const std::string program = "C:\\qv\\bin\\zqvmtbrn.exe";
  using Case = std::tuple<bool, const char *, const char *>;
  for (const auto &[runs, given, published] :
       {Case(true, "VersionNT=400", "ZQVMIGRATE=1|ZQVSTARTSERVICE=1|ZQVSTARTTASKBAR=1|REINSTALLMODE=omus"),
        Case(false, "REINSTALLMODE=o", "ZQVSTARTSERVICE=|ZQVSTARTTASKBAR=|REINSTALLMODE=o"),
        Case(true, "STARTSERVICE=NO|STARTTASKBAR=maybe|USERCHOICE=0",
             "ZQVSTARTSERVICE=|ZQVSTARTTASKBAR=1|ZQVUSERCHOICE=")}) {
    Restart();
    world.registry[kVersionKey] = {{"VRMF", RegistryValue::Text("5.3.0.1")},
                                   {"PgmFolder", RegistryValue::Text("C:\\qv\\")}};
    world.WriteFile(program, "");
    world.held = runs ? NameSet{program} : NameSet();
    world.services["QVSeriesServices"].state = runs ? 4 : 1;
    ExpectInit(0, given, published, {"Registry VRMF is '5.3.0.1' (5.3.0.1)\n"});
    const std::size_t level = LogText().find("Previous installation level 1 ('5.3.0.1'), program folder 'C:\\qv'");
    EXPECT_NE(level, std::string::npos);
    EXPECT_EQ(LogText().find("Previous installation level", level + 1), std::string::npos);
  }
}

TEST_F(InitTest, LanguagesOfTheSystemAndTheInstallation) {
  using Case = std::tuple<const char *, const char *, const char *, const char *, const char *, UINT, const char *>;
  for (const auto &[system, text, longCode, letter, name, result, upgradeCode] :
       {Case{"1031", "", "de_DE", "g", "German", 1603, kServer},
        {"x", nullptr, "en_US", "a", "English", 1603, kServer},  // no row
        {"20490", "Q", "es_ES", "a", "English", 0, kServer},
        {"4100", " ", "zh_CN", "a", "English", 0, kServer},
        {"1042", "TW", "ko_KR", "t", "Traditional Chinese", 0, kServer},
        {"1041", "r", "ja_JP", "a", "English", 0, kTest}}) {
    Restart();
    world.tables["UIText"].rows = {{Cell{}, "g"}, {"zqv__SETUP_language", "g"}};
    if (text != nullptr) {
      world.tables["UIText"].rows.insert(world.tables["UIText"].rows.end(), {{kUi, text}, {kUi, "j"}});
    }
    ExpectInit(result, {{"SystemLanguageID", system}, {"UpgradeCode", upgradeCode}},
               {{"ZQVSYSTEMLANGUAGECODE", longCode}, {"ZQVLANGUAGECODE", letter}, {"ZQVLANGUAGE", name}});
    EXPECT_EQ(Box(), result == 0 ? "" : "<2031 %s%d>");
  }
  ExpectInLog({"TEST EXECUTION\n", "Written 3 bytes to 'C:\\temp\\zqvl0001.dll'\n"});
  Restart();
  world.tables["UIText"].rows = std::vector<Row>(10000, {"Other", "x"});
  world.modules.clear();
  ExpectInit(1603, "", "", {"***Can't find key 'ZQV__setup_language' in UIText table. No UI language transform.\n"});
  EXPECT_EQ(Box(), "No installation language specified. Use the TRANSFORMS property. (ZQV4732)");
}

TEST_F(InitTest, AFailedMessageLibraryDecidesTheResult) {
  world.tables["Binary"].rows.clear();
  ExpectInit(1603, "", "ZQVLICENSEPATH=licenses");
  Restart();
  world.created.reset();
  world.modules.clear();
  ExpectInit(0, "ZQVLICENSETYPE=Trial",
             "ZQVSETUPTITLE=Vantrel QV V6.0 Setup|ZQVSTARTFOLDER=|ZQVPACKAGECODE={CODE}|ZQVBUILDDATE=Packaged* on Aug  "
             "1 2007 at 23:17:22; version 1.231.1.7|ZQVBUILDTIME=");
  Restart();
  world.created = ~std::uint64_t{0};
  ExpectInit(0, {}, "ZQVBUILDDATE=Packaged on 0 00 0000 at 00:00; version 1.231.1.7|ZQVBUILDTIME=18446744073709551615",
             {"***FileTimeToSystemTime() failed (87)\n"});
  // A second run in the same load speaks the new language.
  world.tables["UIText"].rows = {{kUi, "f"}};
  world.modules["C:\\temp\\zqvl0002.dll"].strings[2001] = "%s deux";
  ExpectInit(0, "", "ZQVSETUPTITLE=6.0 deux|ZQVLANGUAGECODE=f");
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
    ExpectInit(0, {{"HIGHCONTRAST", wanted}}, {{"ZQVHIGHCONTRAST", published}, {"ZQVSETHIGHCONTRAST", choice}}, {line});
    EXPECT_EQ(LogText().find("QV registry high contrast") == std::string::npos, *wanted != '\0');
  }
  ExpectInLog({"Text colour is R:1 G:2 B:3\n"});
  Restart();
  world.textColour = 0xFFFFFF;  // high contrast for the text's colour
  Fail("SystemParametersInfoA", 87);
  ExpectInit(0, "", "ZQVHIGHCONTRAST=1", {"RC 87 from SystemParametersInfo(SPI_GETHIGHCONTRAST)\n"});
}

TEST_F(InitTest, VersionsAndServiceLevels) {
  for (const auto &[version, level, vrmf, line] :
       {std::tuple{"6", " 05 . 010", "6.0.5.10", ""},
        {"6.", "A.1", "6.0.A.1", ""},
        {"a.b", "", "0.0.0.0", ""},
        {"010.a203.9", "7.8", "10.203.7.8", ""},
        {"6.0", "99999999999999999999.0", "6.0.99999999999999999999.0", ""},
        {"6.0", "1A.1", "", "***Modification Level '1A' must be all numeric or all alphabetic\n"},
        {"6.0", "1.2.3", "", "***Invalid Modification.Fix Level 'ZQVSERVICESHIPLEVEL'\n"},
        {"6.0", "1.x", "", "***Fix Level 'x' must be numeric\n"},
        {"6.0", " ", "", "***Modification Level '' must be all"},
        {"6.0", "\xC4.1", "", "' must be all numeric or all alphabetic\n"}}) {
    Restart();
    ExpectInit(*vrmf == '\0' ? 1603 : 0, {{"ProductVersion", version}, {"ZQVSERVICESHIPLEVEL", level}},
               {{"ZQVVRMF", vrmf}}, {line});
    EXPECT_EQ(LogText().find("***") == std::string::npos, *line == '\0');
  }
}

TEST_F(InitTest, EachLanguageHasItsCodeLetterAndName) {
  // The last identifier of each language, and some that are of none.
  std::istringstream rows(
      "404 zh_TWt 1004 zh_CNz 1407 de_DEg 500a es_ESs 180c fr_FRf 810 it_ITi 411 ja_JPj 812 ko_KRk 416 pt_BRb "
      "419 ru_RUr 40e hu_HUh 406 da_DKa 40b fi_FIa 813 nl_NLa 814 no_NOa 415 pl_PLa 81d sv_SEa 816 en_USa 540a en_USa "
      "0 en_USa");
  world.tables["UIText"].rows = {{kUi, ""}};
  for (std::string number, code; rows >> number >> code;) {
    ExpectRun(iwiInstallInitPri, 1603, {{"SystemLanguageID", std::to_string(std::stoi(number, nullptr, 16))}});
    EXPECT_EQ(world.properties["ZQVSYSTEMLANGUAGECODE"] + world.properties["ZQVLANGUAGECODE"], code) << number;
  }
  for (const auto &[letter, name] :
       Properties("a=English|b=Portuguese|f=French|g=German|h=Hungarian|i=Italian|j=Japanese|k=Korean|r=Russian|"
                  "s=Spanish|t=Traditional Chinese|z=Simplified Chinese")) {
    world.tables["UIText"].rows = {{kUi, letter}};
    ExpectRun(iwiInstallInitPri, 0);
    EXPECT_EQ(Values({"ZQVLANGUAGECODE", "ZQVLANGUAGE"}), letter + "|" + name + "|");
  }
}

TEST_F(InitTest, WhatIsMissingAndWhatIsKept) {
  // No temporary name, but the rest.
  ExpectInit(1603, "TempFolder=", "ZQVLANGUAGECODE=g|ZQVLICENSEPATH=licenses");
  Restart();
  world.MakeFolder("C:\\new");
  ExpectInit(0, "REMOVE=ALL");
  ExpectInit(0, "REMOVE=|ZQVTEMP=C:\\new", "ZQVREMOVE=1");  // read once a load; the folder is not
  EXPECT_TRUE(world.Exists("C:\\new\\zqvl0001.dll"));
  Restart();
  world.WriteFile("C:\\temp\\r.ini", "[Response]\nKEEPWEBDATA=delete\nKEEPQMDATA=delete\nSTARTSERVICE=1\n");
  ExpectInit(0, "USEINI=C:\\temp\\r.ini", "ZQVLEAVEWEBDATAINSTALL=keep|ZQVLEAVEQMDATAINSTALL=delete|ZQVSTARTSERVICE=");
}

TEST_F(InitTest, WhatStopsAnInstallation) {
  const char *const named = "<2034 %1>", *const old = "<2034 %s>";
  using Case = std::tuple<const char *, const char *, const char *, const char *>;
  for (const auto &[format, given, box, line] :
       {Case(named, "ZQVCHECKMSCS=1|ZQVCHECKPUBSUB=0", "<2054 %s%d>",
             "ServicePac MC74 (MSCS support) is not installed\n"
             "iwiInstallInitPri: Property 'ZQVCHECKPUBSUB' value '0' from property table\n"
             "iwiInstallInitPri: ServicePac MA0C (Pub/Sub) is installed\n"),
        Case(named, "WIZPARMFILE=\"C:\\no file\"", "<2034 C:\\no file>", ""),
        Case(old, "WIZPARMFILE=C:\\none", "<2034 C:\\none>", ""),
        Case(nullptr, "WIZPARMFILE=C:\\no", "Can't open file 'C:\\no'. (ZQV4734)", ""),
        Case(named, "ADDLOCAL=Nothing", "Unknown feature(s) 'Nothing' in command-line property 'ADDLOCAL'. (ZQV4740)",
             "***Stopping because of unknown features\n"),
        Case(named, "ZQVLICENSETYPE=Gift", "", "***Unknown licence type 'Gift'\n")}) {
    Restart();
    world.registry[kVersionKey + "\\SupportPacs Applied\\MA0C"];
    if (format != nullptr) {
      world.modules["C:\\temp\\zqvl0001.dll"].strings[2034] = format;
    } else {
      world.modules.clear();
    }
    ExpectInit(1603, given, "", {line});
    EXPECT_EQ(Box(), box);
  }
}

TEST_F(InitTest, WhatMayBeWrongAndStopsNothing) {
  world.modules["C:\\temp\\zqvl0001.dll"].strings[2035] = "<2035 %1>";
  world.MakeFolder("C:\\new\\folder\\x.ini");
  ExpectInit(0, "SAVEINI=C:\\new\\folder\\x.ini|ZQVLICENSETYPE=TRIAL|AGREETOLICENSE=maybe",
             "ZQVSETUPTITLE=<2002 6.0%d>|AgreeToLicense=", {"***AGREETOLICENSE value 'maybe' not acceptable\n"});
  EXPECT_EQ(Box(), "<2035 5>");
  Restart();
  ExpectInit(0, "SAVEINI= C:\\new\\a\\x.ini |ZQVLICENSETYPE=trial|TRIALTOPROD=1|AGREETOLICENSE=YES",
             "ZQVSETUPTITLE=<2001 6.0%d>|AgreeToLicense=Yes|SAVEINI= C:\\new\\a\\x.ini ");
  EXPECT_EQ(world.ReadFile("C:\\new\\a\\x.ini"), "");
}

}  // namespace
