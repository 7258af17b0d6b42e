#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "features/answers/response_file.h"
#include "features/answers/response_property.h"
#include "features/feature_table.h"
#include "support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace {

using std::literals::operator""s;

constexpr char kIni[] = "C:\\temp\\r.ini";
const std::string kNeither = "No parameter definition in line\nNo keyword in line\n";

class FeaturesTest : public LibraryTest {
 protected:
  FeaturesTest() {
    for (const char *name : kFeatureNames) {
      world.features[name] = {};
    }
  }

  bool Read(const std::string &bytes) {
    Reload();
    world.WriteFile(kIni, bytes);
    return iwiReadResponseFile(kIni);
  }
  /// The keywords' values, each in angle brackets; "-" for one that is not found.
  std::string Answers(std::vector<const char *> keywords, bool exactCase = false, const char *stanza = "Response") {
    std::string values, value;
    for (const char *keyword : keywords) {
      values += iwiGetResponseValue(exactCase, stanza, keyword, value) ? "<" + value + ">" : "-" + value;
    }
    return values;
  }
};

TEST_F(FeaturesTest, LinesOfAResponseFile) {
  const std::string longest = "k=" + std::string(513, 'v'), value = "<" + longest.substr(2) + ">";
  world.environment = {{"P", "C:\\p"}, {"SELF", "%SELF%"}, {"LONG", longest}};
  EXPECT_TRUE(Read("[Response]x\r\na=v\r\n \tb =  \" v w \" \"\t\nc=\"\"v\"\nd=v\"\ne=\"\nf=a=b;c\ng=a\rb\nh=a\0b\n"s +
                   " /r= x \n/q\n-Quiet\n/ y\n ;i=v\n;j\n#j\n \t\n\r\nl=%P%\\a%NONE%\nm=%SELF%\nn=%LONG%\n" + longest));
  EXPECT_EQ(Answers({"A", "b", "c", "d", "e", "f", "g", "h"}), "<v>< v w><\"v><v><><a=b;c><a><a>");
  EXPECT_EQ(Answers({"-R", "-q", "-", ";i", "L", "m", "n", "k"}),
            "<= x><uiet><y><v><C:\\p\\a%NONE%><%SELF%><" + longest + ">" + value);
  for (const auto &[text, values] : {std::pair{longest + "l=x", value + "<x>"},
                                     {"k=v\nK=a\nk=", "<>-"},
                                     {"k=v\n[other\nl=w", "<v>-"},
                                     {"k=v\n[RESPONSE] \nl=w", "-<w>"},  // the newer stanza hides the older
                                     {"k=v\n[ Response]\nk=w", "<v>-"}}) {
    EXPECT_TRUE(Read("[Response]\n" + text)) << text;
    EXPECT_EQ(Answers({"k", "l"}), values) << text;
  }
  EXPECT_EQ(Lines(), "");
  EXPECT_FALSE(Read("[Response]\n" + longest + "\nbad\n = v\n\xEF\xBB\xBF[Response]\nl=w"));
  EXPECT_EQ(Lines(), kNeither + "No keyword in line\n" + kNeither);
  EXPECT_EQ(Answers({"k", "l"}), value + "<w>");
  EXPECT_FALSE(Read("[]\nk=v"));
  EXPECT_EQ(Lines() + Answers({"k"}, true, ""), "No stanza name\n<v>");
  EXPECT_TRUE(Read("[a]\nKey=1\nkey=2\nKEY=3\n[b]\nkey=4\n"));
  EXPECT_EQ(Answers({"key", "Key", "kEy"}, true, "A") + Answers({"kEy"}, false, "a"), "<2><1>-<3>");
  // A missing keyword is told rather than a failed expansion, and that rather than a missing stanza.
  world.failCall = {"ExpandEnvironmentStringsA", 0, 8};
  EXPECT_FALSE(Read("=%P%\nk=%P%\nk=v\n[Response]\nk=%P%\nl=w"));
  const std::string failed = "***Unable to expand environment strings (code 8) for '%P%'\n";
  EXPECT_EQ(Lines(), "No keyword in line\n" + failed + "No stanza\n" + failed);
  EXPECT_EQ(Answers({"k", "l"}), "-<w>");
}

TEST_F(FeaturesTest, AResponseFileIsReadOnce) {
  EXPECT_FALSE(iwiReadResponseFile("C:\\temp"));
  world.WriteFile(kIni, "[Response]\nk=v\nbad");
  world.held.insert(kIni);
  EXPECT_FALSE(iwiReadResponseFile(kIni));
  EXPECT_EQ(Answers({"k"}), "-");
  world.held.clear();
  EXPECT_FALSE(iwiReadResponseFile(kIni));
  world.WriteFile(kIni, "[Response]\nk=w");
  EXPECT_TRUE(iwiReadResponseFile(kIni));
  EXPECT_EQ(Answers({"k"}), "<v>");
  Unload();
  LoadInSession();
  Fail("fread", 5);
  EXPECT_FALSE(iwiReadResponseFile(kIni));
  EXPECT_EQ(Lines(), "***Can't open 'C:\\temp'\n***Can't open 'C:\\temp\\r.ini'\n" + kNeither +
                         "***Can't read 'C:\\temp\\r.ini'\n");
}

TEST_F(FeaturesTest, LargeResponseFilesAreSurvived) {
  std::string stanzas = "[Response]\nk=v\n", lines = "[Response]\n";
  for (int i = 0; i < 65536; ++i) {
    const std::string number = std::to_string(i);
    stanzas += "[s" + number + "]\nk=" + number + "\n";
    lines += "k" + number + "=" + number + "\n";
  }
  EXPECT_TRUE(Read(stanzas));
  EXPECT_EQ(Answers({"k"}) + Answers({"K"}, true, "s7") + Answers({"k"}, false, "S65535"), "<v>-<65535>");
  EXPECT_FALSE(Read(lines + std::string(200000, 'x')));
  EXPECT_EQ(Answers({"k0", "K65535", "k65536"}), "<0><65535>-");
}

TEST(ResponseFileFuzz, CorpusIsSurvived) {
  int files = 0;
  for (const auto &entry : std::filesystem::directory_iterator(ZQV_CORPUS)) {
    std::ifstream file(entry.path(), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size());
    ++files;
  }
  EXPECT_GT(files, 10);
}

TEST_F(FeaturesTest, AWrittenResponseFileGivesTheSameAnswers) {
  world.properties = Properties(
      "SAVEINI= \"C:\\temp\\r.ini\" |ZQVPGMFOLDER=C:\\p q\\|ZQVDATFOLDER=C:\\d|KEEPQMDATA=delete|WIZPARMFILE= w |"
      "HIGHCONTRAST=1");
  const std::tuple<const char *, int, int> states[] = {
      {"Base", 2, 3},        {"Server", 3, -1}, {"Explorer", 3, 2}, {"Client", -1, 4},
      {"FTA_Client", 3, -4}, {"JavaMsg", 3, 1}, {"Toolkit", 1, 0},  {"docs_de_de_eclipse", 0, -1}};
  for (const auto &[name, installed, action] : states) {
    world.features[name] = {static_cast<INSTALLSTATE>(installed), static_cast<INSTALLSTATE>(action)};
  }
  world.features.erase("docs_zh_tw_eclipse");
  EXPECT_EQ(iwiWriteResponseFile(kSession), 0u);
  std::string written = world.ReadFile(kIni).value_or("");
  std::replace(written.begin(), written.end(), '\r', '|');
  std::replace(written.begin(), written.end(), '"', '\'');
  EXPECT_EQ(written,
            "[Response]|\nPGMFOLDER='C:\\p q'|\nDATFOLDER='C:\\d'|\nLOGFOLDER=''|\nADDLOCAL='Base,Server'|\n"
            "REMOVE='FTA_Server,Explorer,docs_en_us_eclipse,docs_es_es_eclipse,docs_fr_fr_eclipse,docs_it_it_eclipse,"
            "docs_ja_jp_eclipse,docs_ko_kr_eclipse,docs_pt_br_eclipse,docs_zh_cn_eclipse'|\n"
            "ADDSOURCE='Client,FTA_Client'|\nADVERTISE='JavaMsg,Toolkit'|\n;AGREETOLICENSE='yes'|\n"
            ";REMOVEFEATURES='yes'|\nKEEPQMDATA='delete'|\nKEEPWEBDATA=''|\nUSERCHOICE=''|\nLAUNCHWIZ=''|\n"
            ";WIZPARMFILE=' w '|\nSTARTSERVICE=''|\nSTARTTASKBAR=''|\nHIGHCONTRAST='1'|\n");
  ExpectInLog({"Writing response file 'C:\\temp\\r.ini'\n", "'FTA_Client' Installed: 3 Action: -4\n",
               "'docs_zh_tw_eclipse' Installed: -1 Action: -1\n"});
  Reload();
  world.properties = {{"USEINI", kIni}};
  std::string value;
  EXPECT_TRUE(GetPropertyWithResponse("ADDSOURCE", value));
  EXPECT_EQ(value + Answers({"pgmfolder", "LogFolder", "WIZPARMFILE"}), "Client,FTA_Client<C:\\p q><>-");
}

TEST_F(FeaturesTest, AResponseFileThatCannotBeWrittenFails) {
  ExpectRun(iwiWriteResponseFile, 1603, "SAVEINI=", {": ***Can't open ''\n"});
  Fail("MsiGetFeatureStateA", 87, 2);
  ExpectRun(
      iwiWriteResponseFile, 1603, "SAVEINI=C:\\temp\\r.ini",
      {": Error 87 from MsiGetFeatureState(Server)\niwiWriteResponseFile: 'FTA_Server' Installed: 2 Action: -1\n"});
  EXPECT_NE(world.ReadFile(kIni)->find("REMOVE=\"Base,FTA_Server,Explorer,"), std::string::npos);
  ExpectRun(iwiWriteResponseFile, 1603, "LAUNCHWIZ=" + std::string(260, 'x'),
            {"***msiGetProperty('LAUNCHWIZ') failed (234)\n"});
  EXPECT_EQ(world.ReadFile(kIni), "");
}

TEST_F(FeaturesTest, PresetsChooseByProduct) {
  const std::string server = "+Base+Server-FTA_Server", onlyClient = "+Base+Client";
  const std::string fromServer = "+Base-Server-FTA_Server-Explorer-FTA_Client+Client";
  const std::string least = "-JavaMsg-Toolkit", most = "+Toolkit+JavaMsg";
  const std::string typical = server + "+Explorer-Client-FTA_Client" + most;
  // The product type that the registry has, the properties, and the choices.
  const std::tuple<EntryPoint, const char *, std::string, std::string> cases[] = {
      {iwiSetFeaturesMinimum, "", "ZQVCLIENT=0|ZQVPRODUCT=server", server + "-Explorer-Client-FTA_Client" + least},
      {iwiSetFeaturesMinimum, "", "ZQVCLIENT=YES|ZQVPRODUCT= SERVER|VersionNT=501", fromServer + least},
      {iwiSetFeaturesMinimum, "", "ZQVCLIENT=1|ZQVPRODUCT=xa|VersionNT=501", onlyClient + least},
      {iwiSetFeaturesTypical, "server", "ZQVPRODUCT=CLIENT|VersionNT=501", onlyClient + most},
      {iwiSetFeaturesTypical, "server", "ZQVPRODUCT=server", fromServer + most},
      {iwiSetFeaturesTypical, "Client", "ZQVPRODUCT=server|VersionNT=501|Installed=00:00:00", fromServer + most},
      {iwiSetFeaturesTypical, "client", "ZQVCLIENT=maybe|ZQVPRODUCT=client|Installed=1", typical},
      {iwiSetFeaturesTypical, "client", "ZQVPRODUCT=server|VersionNT=501", typical},
      {iwiSetFeaturesTypical, "server", "VersionNT=501|Installed=1", typical}};
  for (const auto &[preset, type, given, choices] : cases) {
    world.properties.clear();
    world.registry["hklm\\Software\\Korvex\\QVSeries\\CurrentVersion"]["ProductType"] = RegistryValue::Text(type);
    ExpectRun(preset, 0, given);
    std::string made;
    for (const std::string &line : world.installerLog) {
      const std::size_t set = line.find("' feature state set to INSTALLSTATE_"), name = line.find(": '") + 3;
      made += set == std::string::npos ? "" : (line.ends_with("_LOCAL") ? "+" : "-") + line.substr(name, set - name);
    }
    EXPECT_EQ(made, choices) << LogText();
  }
  EXPECT_EQ(world.properties["INSTALLLEVEL"], "100");
  EXPECT_EQ(world.installLevels, std::vector<int>(9, 100));
}

TEST_F(FeaturesTest, PresetsGoOnAfterAFailureAndSetTheLevelOnce) {
  world.properties["VersionNT"] = "501";
  world.features.erase("Server");
  world.failCall = {"MsiSetInstallLevel", 1, 1627};
  EXPECT_EQ(iwiSetFeaturesTypical(kSession), 1603u);
  EXPECT_EQ(world.features["Toolkit"].action, INSTALLSTATE_LOCAL);
  EXPECT_EQ(iwiSetFeaturesTypical(kSession), 1603u);
  EXPECT_EQ(iwiSetFeaturesMinimum(kSession), 1603u);
  EXPECT_EQ(world.features["Toolkit"].action, INSTALLSTATE_ABSENT);
  ExpectInLog({"Typical: MsiSetInstallLevel(100) rc=1627\n", "Typical: MsiSetInstallLevel(100) rc=0\n",
               "Minimum: Install level already set\n", "Minimum: Client-only installation: no\n",
               "Minimum: ***MsiSetFeatureState(Server, INSTALLSTATE_LOCAL) rc: 0x00000646\n"});
  const int before = world.callCount["MsiSetFeatureStateA"];
  world.properties["ZQVPRODUCT"] = std::string(32, 'x');
  EXPECT_EQ(iwiSetFeaturesMinimum(kSession), 1603u);
  EXPECT_EQ(world.callCount["MsiSetFeatureStateA"], before);
}

}  // namespace
