#include "runtime/property.h"

#include <algorithm>

#include "runtime/message.h"
#include "runtime/path_property.h"
#include "runtime/progress.h"
#include "runtime/response_property.h"
#include "runtime/text.h"
#include "services/path.h"
#include "support.h"

namespace {

class PropertyTest : public LibraryTest {
 protected:
  std::string Read(const char *name, DWORD length = kPropertyLength) {
    std::string value = "junk";
    const UINT result = GetProperty(name, value, length);
    return result == 0 ? value : Format("%u:%s", result, value.c_str());
  }

  /// Runs what follows as a deferred action whose value list holds `list`.
  void Defer(const std::string &list) {
    Reload();
    world.modes = {MSIRUNMODE_ROLLBACK};
    world.properties["CustomActionData"] = "C:\\temp\\zqvp0001.txt";
    world.WriteFile("C:\\temp\\zqvp0001.txt", list);
    ForgetRunModes();
  }
};

TEST_F(PropertyTest, TableReadsAndSetsAreLogged) {
  world.properties["A"] = "x";
  EXPECT_EQ(Read("A"), "x");
  EXPECT_EQ(Read("B"), "");
  EXPECT_EQ(Read("A", 1), "1603:");
  EXPECT_EQ(SetProperty("A", ""), 0u);
  world.failCall = {"MsiSetPropertyA", 0, 87};
  EXPECT_EQ(SetProperty("A", "%d"), 1603u);
  EXPECT_EQ(TakeLog("(CaProlog)"),
            "Property 'A' value 'x' from property table\n"
            "Property 'B' not defined in property table\n"
            "***msiGetProperty('A') failed (234)\n"
            "Property 'A' value set to ''\n"
            "***msiSetProperty('A') value('%d') failed (87)\n");
}

TEST_F(PropertyTest, ValueListEntriesAreWalkedAsTheyAlwaysWere) {
  struct Case {
    const char *list;
    const char *name;
    const char *value;
  };
  for (const Case &c : {Case{"A=1;B=x=y;C;", "B", "x=y"},
                        {"A=1;B=2", "B", "2"},           // no line end: the last character stays
                        {"A=1;A=2;\r\nB=3;", "A", "1"},  // the first wins
                        {"A=1;\r\nB=3;", "B", ""},       // one line only
                        {"A=1;C;", "C", ""},             // no equals sign
                        {"A=1;", "a", ""},               // case counts
                        {"A=1;;B=2;D=3;", "B", ""},      // an empty entry swallows its successor
                        {"A=1;;B=2;D=3;", "D", "3"},
                        {"A=\xE4\xFF;", "A", "\xE4\xFF"}}) {
    Defer(c.list);
    EXPECT_EQ(Read(c.name), c.value) << c.list;
  }
  Defer("A=;");
  world.installerLog.clear();
  EXPECT_EQ(Read("A"), "");
  EXPECT_EQ(Read("Z"), "");
  EXPECT_EQ(SetProperty("A", "v"), 0u);
  EXPECT_EQ(TakeLog("(CaProlog)"),
            "Property 'CustomActionData' value 'C:\\temp\\zqvp0001.txt' from property table\n"
            "Size of value list is 3\n"
            "Property 'A' value ''; from CustomActionData\n"
            "Property 'Z' not defined in CustomActionData\n"
            "SETPROPERTY('A', 'v') ignored during deferred execution\n");
  Defer("A=" + std::string(260, 'x') + ";B=" + std::string(259, 'y') + ";" + std::string(1000000, 'z'));
  EXPECT_EQ(Read("A"), "1603:");
  EXPECT_EQ(Read("B").size(), 259u);
  Defer(std::string(1000, '\0') + "A=1;");
  EXPECT_EQ(Read("A"), "");
}

TEST_F(PropertyTest, AValueListIsLoadedOnceAndTriedAgainAfterAFailure) {
  const std::string path = "C:\\temp\\zqvp0001.txt";
  Defer("A=1;");
  world.held.insert(path);
  world.installerLog.clear();
  EXPECT_EQ(Read("A"), "1603:");
  world.held.clear();
  world.WriteFile(path, "");
  std::string value;
  EXPECT_EQ(CadGetProperty("A", value), 0u);
  world.WriteFile(path, "A=2;");
  EXPECT_EQ(Read("A"), "");
  EXPECT_EQ(TakeLog("(CaProlog)"), "Property 'CustomActionData' value '" + path +
                                       "' from property table\n"
                                       "***Can't open '" +
                                       path +
                                       "' (32)\n"
                                       "Property 'CustomActionData' value '" +
                                       path +
                                       "' from property table\n"
                                       "***Can't get file size\n"
                                       "Size of value list is 512000\n"
                                       "Property 'A' not defined in CustomActionData\n"
                                       "Property 'A' not defined in CustomActionData\n");
}

TEST_F(PropertyTest, TheResponseFileAnswersWhatTheTableDoesNot) {
  world.properties["USEINI"] = " C:\\temp\\answers.ini ";
  world.properties["KEEPQMDATA"] = "table";
  world.WriteFile("C:\\temp\\answers.ini",
                  "; comment\r\n[response]\r\nkeepqmdata=file\r\nPgmFolder = \" C:\\x \" \r\n");
  std::string value;
  bool fromResponse = true;
  EXPECT_EQ(GetPropertyWithResponse("KEEPQMDATA", value, &fromResponse), 0u);
  EXPECT_EQ(value, "table");
  EXPECT_FALSE(fromResponse);
  EXPECT_EQ(GetPropertyWithResponse("PGMFOLDER", value, &fromResponse), 0u);
  EXPECT_EQ(value, " C:\\x");
  EXPECT_TRUE(fromResponse);
  EXPECT_EQ(GetPropertyWithResponse("NOWHERE", value), 0u);
  EXPECT_EQ(value, "");
  EXPECT_NE(LogText().find("Property 'PGMFOLDER', value ' C:\\x' from response file\n"), std::string::npos);
  EXPECT_NE(LogText().find("Property 'NOWHERE' not defined in response file\n"), std::string::npos);
}

TEST_F(PropertyTest, AnUnreadableResponseFileIsShownAndFails) {
  world.properties["USEINI"] = "C:\\temp\\none.ini";
  world.properties["UILevel"] = "5";
  world.properties["ZQVTEMPFILENUM"] = "0007";
  world.modules["C:\\temp\\zqvl0007.dll"].strings = {{2034, "Cannot read %1."}};
  std::string value;
  EXPECT_EQ(GetPropertyWithResponse("PGMFOLDER", value), 1603u);
  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, "Cannot read C:\\temp\\none.ini.");
  EXPECT_EQ(world.boxes[0].caption, "Korvex Vantrel QV");
  // A bad line fails too, but the good ones are loaded.
  world.WriteFile("C:\\temp\\none.ini", "stray=1\n[Response]\nPGMFOLDER=C:\\p\nneither form\n=x\n[]\n");
  world.installerLog.clear();
  EXPECT_EQ(GetPropertyWithResponse("PGMFOLDER", value), 1603u);
  const std::string log = TakeLog("(CaProlog)");
  EXPECT_NE(log.find("No stanza\nNo parameter definition in line\nNo keyword in line\nNo keyword in line\n"
                     "No stanza name\n"),
            std::string::npos)
      << log;
  EXPECT_EQ(GetPropertyWithResponse("PGMFOLDER", value), 0u);
  EXPECT_EQ(value, "C:\\p");
}

TEST_F(PropertyTest, PathPropertiesAreSharedAndCounted) {
  std::string first;
  std::string again;
  std::string other;
  EXPECT_EQ(GetPathProperty("C:\\A\\", first), 0u);
  EXPECT_EQ(GetPathProperty("c:\\a\\", again), 0u);
  EXPECT_EQ(GetPathProperty("C:\\B\\", other), 0u);
  EXPECT_EQ(first + again + other, "ZQVPATHPROPERTY0ZQVPATHPROPERTY0ZQVPATHPROPERTY1");
  EXPECT_EQ(world.properties["ZQVPATHPROPERTY1"], "C:\\B\\");
  EXPECT_EQ(world.properties["ZQVPROPERTYCOUNTER"], "2");
}

class DeferredDataTest : public PropertyTest {};

TEST_F(DeferredDataTest, TheValueListHoldsTheNamedProperties) {
  world.properties.insert({{"ZQVTEMPFILENUM", "0001"},
                           {"ZQVPROPERTYNAMELIST1", "A;;B"},
                           {"ZQVPROPERTYNAMELIST3", ";PGMFOLDER;DATA;A"},
                           {"A", "1;2"},
                           {"USEINI", "C:\\temp\\r.ini"}});
  world.WriteFile("C:\\temp\\r.ini", "[Response]\nPGMFOLDER=C:\\p\nDATA=not asked for\n");
  EXPECT_EQ(iwiWriteDeferredProperties(kSession), 0u);
  EXPECT_EQ(world.ReadFile("C:\\temp\\zqvp0001.txt"), "A=1;2;B=;PGMFOLDER=C:\\p;DATA=;A=1;2;");
  EXPECT_NE(LogText().find("Can't get property name list 'ZQVPROPERTYNAMELIST2'\n"), std::string::npos);

  world.properties["B"] = std::string(260, 'b');
  world.WriteFile("C:\\temp\\zqvp0001.txt", "old");
  Reload();
  EXPECT_EQ(iwiWriteDeferredProperties(kSession), 1603u);
  EXPECT_EQ(world.ReadFile("C:\\temp\\zqvp0001.txt"), "old");

  world.properties["B"] = "";
  world.held.insert("C:\\temp\\zqvp0001.txt");
  Reload();
  EXPECT_EQ(iwiWriteDeferredProperties(kSession), 0u);
  EXPECT_NE(LogText().find("***Can't open 'C:\\temp\\zqvp0001.txt'\n"), std::string::npos);
  world.held.clear();
  world.failWritesTo.insert("C:\\temp\\zqvp0001.txt");
  Reload();
  EXPECT_EQ(iwiWriteDeferredProperties(kSession), 1603u);
}

TEST_F(DeferredDataTest, DeferredActionsInALibraryAreGivenTheListsPath) {
  world.properties["ZQVTEMPFILENUM"] = "0001";
  world.tables["CustomAction"] = {
      {"Action", "Type"}, {{"Immediate", 1}, {"Deferred", 0x401}, {"Script", 0x402}, {"Null", {}}, {"Last", 0x541}}};
  EXPECT_EQ(iwiSetCustomActionData(kSession), 87u);
  EXPECT_EQ(world.properties["Deferred"], "C:\\temp\\zqvp0001.txt");
  EXPECT_EQ(world.properties["Last"], "C:\\temp\\zqvp0001.txt");
  EXPECT_EQ(world.properties.count("Immediate") + world.properties.count("Script"), 0u);
  EXPECT_NE(LogText().find("CA Name:'Script' type 0x00000402\n"), std::string::npos);
  EXPECT_NE(LogText().find("***MsiRecordGetInteger('2') failed (87)\n"), std::string::npos);
  Reload();
  world.failCall = {"MsiSetPropertyA", 0, 1603};
  world.properties.erase("Last");
  world.tables["CustomAction"].rows.pop_back();
  EXPECT_EQ(iwiSetCustomActionData(kSession), 1603u);
  Reload();
  world.failCall = {};
  world.tables.clear();
  EXPECT_EQ(iwiSetCustomActionData(kSession), 1615u);
}

class MessageTest : public LibraryTest {};

TEST_F(MessageTest, TheSplashWindowIsClosedBeforeABox) {
  world.windows["ZQVQVSeriesSplash"] = 3;
  CloseSplash();
  CloseSplash();
  EXPECT_EQ(world.slept, 750u);
  EXPECT_EQ(TakeLog("(CaProlog)"), "Closing splash window (class ZQVQVSeriesSplash)\nSplash bitmap not running\n");
}

TEST_F(MessageTest, TheSeverityComesFromTheIcon) {
  for (const auto &[type, word] :
       {std::pair{0x10u, "error"}, {0x21u, "warning"}, {0x34u, "warning"}, {0x40u, "info"}, {0x01u, ""}}) {
    Session().messageShown = false;
    EXPECT_EQ(iiiDisplayMsgBox("text", type), 0);
    EXPECT_EQ(Session().messageShown, type == 0x10u);
    EXPECT_NE(LogText().find(Format("QVCA  MB %s: text\n", word)), std::string::npos);
    world.installerLog.clear();
  }
}

TEST_F(MessageTest, InsertsAreFilledOrTheFormatIsGiven) {
  std::string text;
  EXPECT_EQ(FormatInserts(text, "%2 %1 %4%5 100%%", "a", "b", "c", "d"), 1);
  EXPECT_EQ(text, "b a d 100%");
  EXPECT_EQ(FormatInserts(text, "%1%1", std::string(300, 'x').c_str()), 0);
  EXPECT_EQ(text, "%1%1");
  EXPECT_EQ(TakeLog("(CaProlog)"), "***Error 122 from FormatMessage(), '%1%1'\n");
}

TEST_F(MessageTest, ProgressIsReportedInScheduledModeOnly) {
  SendProgress(0, 5);
  SendActionData("x");
  EXPECT_TRUE(world.messages.empty());
  world.modes = {MSIRUNMODE_SCHEDULED};
  ForgetRunModes();
  SendProgress(0, 5);
  SendActionData("x");
  ASSERT_EQ(world.messages.size(), 2u);
  EXPECT_EQ(world.messages[0].type, 0x0A000000);
  EXPECT_EQ(world.messages[0].fields, (Row{{}, 2, 5, 0}));
  EXPECT_EQ(world.messages[1].fields, (Row{{}, "x"}));
}

TEST(TextTest, PathsAreTidied) {
  struct Case {
    const char *path, *without, *with;
  };
  for (const Case &c : {Case{"", "", "\\"},
                        {"   ", "", "\\"},
                        {"\"", "", "\\"},
                        {" \"C:\\a b\\\" ", "C:\\a b", "C:\\a b\\"},
                        {"C:\\", "C:", "C:\\"},
                        {"C:\\\\\\a\\\\b", "C:\\a\\b", "C:\\a\\b\\"},
                        {"\\\\\\\\server\\share", "\\\\server\\share", "\\\\server\\share\\"},
                        {"C:/a", "C:/a", "C:/a\\"}}) {
    EXPECT_EQ(Trimmed(c.path), c.without);
    std::string path = c.path;
    EXPECT_EQ(iwiTidyPath(kWithBackslash, path), c.with);
  }
}

TEST(TextTest, NumbersAreReadWithoutThrowing) {
  struct Case {
    const char *text;
    int value;
  };
  for (const Case &c : {Case{"", 0},
                        {" 12x", 12},
                        {"-7", -7},
                        {"+7", 7},
                        {"x", 0},
                        {"2147483647", 2147483647},
                        {"99999999999999999999", 2147483647},
                        {"-99999999999999999999", -2147483647 - 1}}) {
    EXPECT_EQ(DecimalValue(c.text), c.value) << c.text;
  }
}

}  // namespace
