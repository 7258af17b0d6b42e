#include "runtime/property.h"

#include "base/path.h"
#include "base/text.h"
#include "features/answers/response_property.h"
#include "runtime/message.h"
#include "runtime/progress.h"
#include "services/tables/remove_file.h"
#include "support.h"

namespace {

const std::string kList = "C:\\temp\\zqvp0001.txt";

class PropertyTest : public LibraryTest {
 protected:
  std::string Read(const char *name) {
    std::string value = "junk";
    return GetProperty(name, value) ? value : "failed:" + value;
  }

  /// Runs what follows as a deferred action whose value list holds `list`.
  void Defer(const std::string &list) {
    Reload();
    world.modes = {MSIRUNMODE_ROLLBACK};
    world.properties["CustomActionData"] = kList;
    world.WriteFile(kList, list);
    ForgetRunModes();
  }
};

TEST_F(PropertyTest, ValueListEntriesAreWalkedAsTheyAlwaysWere) {
  const std::tuple<std::string, const char *, std::string> cases[] = {
      {"A=1;B=x=y;C;", "B", "x=y"},
      {"A=1;B=2", "B", "2"},           // no line end: the last character stays
      {"A=1;A=2;\r\nB=3;", "A", "1"},  // the first wins
      {"A=1;\r\nB=3;", "B", ""},       // one line only
      {"A=1;C;", "C", ""},             // no equals sign
      {"A=1;", "a", ""},               // case counts
      {"A=1;;B=2;D=3;", "B", ""},      // an empty entry swallows its successor
      {"A=1;;B=2;D=3;", "D", "3"},
      {"A=\xE4\xFF;", "A", "\xE4\xFF"},
      {std::string(1000, '\0') + "A=1;", "A", ""},
      {"A=" + std::string(260, 'x') + ";", "A", "failed:"},
      {"A=;B=" + std::string(259, 'y') + ";" + std::string(1000000, 'z'), "B", std::string(259, 'y')}};
  for (const auto &[list, name, value] : cases) {
    Defer(list);
    EXPECT_EQ(Read(name), value) << list.substr(0, 20);
  }
  Defer("A=;");
  EXPECT_EQ(Read("A"), "");
  EXPECT_EQ(Read("Z"), "");
  EXPECT_TRUE(SetProperty("A", "v"));
  EXPECT_EQ(Lines(), "Property 'CustomActionData' value '" + kList +
                         "' from property table\nSize of value list is 3\n"
                         "Property 'A' value ''; from CustomActionData\n"
                         "Property 'Z' not defined in CustomActionData\n"
                         "SETPROPERTY('A', 'v') ignored during deferred execution\n");
}

TEST_F(PropertyTest, AValueListIsLoadedOnceAndTriedAgainAfterAFailure) {
  Defer("A=1;");
  world.held.insert(kList);
  EXPECT_EQ(Read("A"), "failed:");
  world.held.clear();
  world.WriteFile(kList, "");
  std::string value;
  EXPECT_TRUE(CadGetProperty("A", value));
  world.WriteFile(kList, "A=2;");
  EXPECT_EQ(Read("A"), "");
  const std::string asked = "Property 'CustomActionData' value '" + kList + "' from property table\n",
                    none = "Property 'A' not defined in CustomActionData\n";
  EXPECT_EQ(Lines(), asked + "***Can't open '" + kList + "' (32)\n" + asked +
                         "***Can't get file size\nSize of value list is 512000\n" + none + none);
}

TEST_F(PropertyTest, TheResponseFileAnswersWhatTheTableDoesNotOrItsFailureIsShown) {
  Set("USEINI= C:\\temp\\answers.ini |KEEPQMDATA=table");
  world.WriteFile("C:\\temp\\answers.ini", "[response]\r\nkeepqmdata=file\r\nPgmFolder = \" C:\\x \" \r\n");
  std::string value;
  for (const auto &[name, expected, response] :
       {std::tuple("KEEPQMDATA", "table", false), {"PGMFOLDER", " C:\\x", true}, {"NOWHERE", "", false}}) {
    bool fromResponse = !response;
    EXPECT_TRUE(GetPropertyWithResponse(name, value, &fromResponse));
    EXPECT_EQ(std::pair(value, fromResponse), std::pair(std::string(expected), response));
  }
  ExpectInLog({"Property 'PGMFOLDER', value ' C:\\x' from response file\n",
               "Property 'NOWHERE' not defined in response file\n"});
  Reload();
  Set("ZQVTEMPFILENUM=0007|UILevel=5|USEINI=C:\\temp\\none.ini");
  world.modules["C:\\temp\\zqvl0007.dll"].strings = {{2034, "Cannot read %1."}};
  EXPECT_FALSE(GetPropertyWithResponse("PGMFOLDER", value));
  EXPECT_EQ(world.boxes.at(0).text + world.boxes[0].caption, "Cannot read C:\\temp\\none.ini.Korvex Vantrel QV");
}

TEST_F(PropertyTest, TheValueListHoldsTheNamedProperties) {
  world.WriteFile("C:\\temp\\r.ini", "[Response]\nPGMFOLDER=C:\\p\nDATA=not asked for\n");
  ExpectRun(iwiWriteDeferredProperties, 0,
            "ZQVTEMPFILENUM=0001|ZQVPROPERTYNAMELIST1=A;;B|ZQVPROPERTYNAMELIST3=;PGMFOLDER;DATA;A|A=1;2|"
            "USEINI=C:\\temp\\r.ini",
            {"Can't get property name list 'ZQVPROPERTYNAMELIST2'\n"});
  EXPECT_EQ(world.ReadFile(kList), "A=1;2;B=;PGMFOLDER=C:\\p;DATA=;A=1;2;");
  world.WriteFile(kList, "old");
  ExpectRun(iwiWriteDeferredProperties, 1603, "B=" + std::string(260, 'b'));
  EXPECT_EQ(world.ReadFile(kList), "old");
  world.held.insert(kList);
  ExpectRun(iwiWriteDeferredProperties, 0, "B=", {"***Can't open '" + kList + "'\n"});
  world.held.clear();
  Fail("fwrite", 112);
  ExpectRun(iwiWriteDeferredProperties, 1603);
  Fail("none", 0);  // the number cannot be read: there is no name
  ExpectRun(iwiWriteDeferredProperties, 0, "ZQVTEMPFILENUM=" + std::string(32, '1'),
            {"Property 'A' value '1;2' from property table\n", "***Can't open ''\n"});
}

TEST_F(PropertyTest, DeferredActionsInALibraryAreGivenTheListsPath) {
  world.tables["CustomAction"].rows = {
      {"Immediate", 1}, {"Null", {}}, {"Deferred", 0x401}, {"Script", 0x402}, {"Last", 0x541}};
  ExpectRun(iwiSetCustomActionData, 87, "ZQVTEMPFILENUM=0001",
            {"CA Name:'Script' type 0x00000402\n", "***MsiRecordGetInteger('2') failed (87)\n"});
  EXPECT_EQ(Values({"Immediate", "Deferred", "Script", "Last"}), "|" + kList + "||" + kList + "|");
  Fail("MsiSetPropertyA", 5);
  ExpectRun(iwiSetCustomActionData, 1603);  // although a row has failed before
  EXPECT_EQ(LogText().find("'Script'"), std::string::npos);
  Fail("none", 0);
  ExpectRun(iwiSetCustomActionData, 87, "ZQVTEMPFILENUM=" + std::string(32, '1'),
            {"Property 'Last' value set to ''\n"});
  EXPECT_EQ(Values({"ZQVSCRIPT"}), "|");
  world.tables["CustomAction"].rows = {{"Deferred", 0x401}};
  ExpectRun(iwiSetCustomActionData, 0);
  EXPECT_EQ(Values({"ZQVSCRIPT"}), "1|");
  world.tables.clear();
  ExpectRun(iwiSetCustomActionData, 1615);
}

class MessageTest : public LibraryTest {};

TEST_F(MessageTest, TheSplashWindowIsClosedBeforeABox) {
  world.windows["ZQVQVSeriesSplash"] = {3};
  CloseSplash();
  CloseSplash();
  EXPECT_EQ(world.slept, 750u);
  EXPECT_EQ(Lines(), "Closing splash window (class ZQVQVSeriesSplash)\nSplash bitmap not running\n");
}

TEST_F(MessageTest, ProgressIsShownInTheScheduledModeOnly) {
  for (const int mode : {0, 17, 18, 16}) {
    Reload();
    world.modes = {mode};
    SendProgress(0, 5);
    SendActionData("text");
    ASSERT_EQ(world.messages.size(), mode == MSIRUNMODE_SCHEDULED ? 2u : 0u) << mode;
  }
  const Message &progress = world.messages[0], &data = world.messages[1];
  EXPECT_EQ(std::pair(progress.type, progress.fields), std::pair(0x0A000000, Row{{}, 2, 5, 0}));
  EXPECT_EQ(std::pair(data.type, data.fields), std::pair(0x09000000, Row{{}, "text"}));
  Fail("MsiCloseHandle", 6);  // a record that cannot be closed is told
  const std::function<void()> sends[] = {[] { SendActionData("x"); }, [] { SendProgress(0, 1); },
                                         [] { iiiDisplayMsgBox("x", 0); }};
  for (const auto &send : sends) {
    send();
    EXPECT_NE(Lines().find("***MsiCloseHandle('') failed (6)\n"), std::string::npos);
  }
}

TEST_F(MessageTest, ABoxBelongsToTheForegroundWindowAndHasASecondWay) {
  Set("ZQVTEMPFILENUM=0007|UILevel=5");
  world.modules["C:\\temp\\zqvl0007.dll"];  // without texts
  for (const bool fails : {false, true}) {
    Fail(fails ? "MessageBoxExA" : "", 5);
    EXPECT_EQ(iiiDisplayMsgBox("text", 0x24), 1);
    const Box &box = world.boxes.back();
    EXPECT_EQ(box.text + box.caption, "textKorvex Vantrel QV");
    EXPECT_EQ(std::tuple(box.type, box.language, box.owner),
              std::tuple(0x24u, fails ? -1 : 1024, GetForegroundWindow()));
  }
  EXPECT_EQ(world.boxes.size(), 2u);
  ExpectInLog({": ***iwiLoadNlsString() failed (ID '2027'). (ZQV4701)\n"});
  world.properties["UILevel"] = "2";  // its line says how severe it is, after the icon
  for (const auto &[type, word] :
       {std::pair{0x10u, "error"}, {0x21u, "warning"}, {0x34u, "warning"}, {0x40u, "info"}, {0x01u, ""}}) {
    Reload();
    EXPECT_EQ(iiiDisplayMsgBox("text", type), 0);
    EXPECT_EQ(Session().messageShown, type == 0x10u);
    ExpectInLog({Format("QVCA  MB %s: text\n", word)});
  }
}

TEST_F(MessageTest, InsertsAreFilledOrTheFormatIsGiven) {
  std::string text;
  EXPECT_TRUE(FormatInserts(text, "%2 %1 %4%5 100%%", "a", "b", "c", "d"));
  EXPECT_EQ(text, "b a d 100%");
  EXPECT_FALSE(FormatInserts(text, "%1%1", std::string(300, 'x').c_str()));
  EXPECT_EQ(text, "%1%1");
  EXPECT_EQ(Lines(), "***Error 122 from FormatMessage(), '%1%1'\n");
}

TEST(TextTest, PathsAreTidied) {
  const std::pair<std::string, std::string> paths[] = {{"", ""},
                                                       {"   ", ""},
                                                       {"\"", ""},
                                                       {" \"C:\\a b\\\" ", "C:\\a b"},
                                                       {" \tC:\t ", "\tC:\t"},
                                                       {"C:\\", "C:"},
                                                       {"C:\\\\\\a\\\\b", "C:\\a\\b"},
                                                       {"\\\\\\\\server\\share", "\\\\server\\share"},
                                                       {"C:/a", "C:/a"}};
  for (const auto &[given, tidied] : paths) {
    std::string path = given;
    EXPECT_EQ(Trimmed(path), tidied);
    EXPECT_EQ(iwiTidyPath(kWithBackslash, path), tidied + "\\");
  }
}

TEST(TextTest, AFolderIsAbsoluteWhenItIsTheSameFromEverywhere) {
  for (const char *folder : {"C:\\", "z:\\a b", "C:", "\\\\server\\share", "\\\\s\\s\\a"}) {
    EXPECT_TRUE(IsAbsoluteFolder(folder)) << folder;
  }
  for (const char *folder : {"", "\\", "\\a", "a", "a\\b", "C", "C:a", "C:/a", "1:\\", "\xE4:\\", ".\\", "..", "\\\\",
                             "\\\\s", "\\\\s\\", "\\\\\\s\\a", "\\\\s\\\\a", "//s/a", " C:\\"}) {
    EXPECT_FALSE(IsAbsoluteFolder(folder)) << folder;
  }
}

TEST(TextTest, NumbersAreReadWithoutThrowing) {
  for (const auto &[text, value] :
       Properties("=0| 12x=12|-7=-7|+7=7|x=0|2147483647=2147483647|99999999999999999999=2147483647|"
                  "-99999999999999999999=-2147483648")) {
    EXPECT_EQ(std::to_string(DecimalValue(text)), value) << text;
  }
}

}  // namespace
