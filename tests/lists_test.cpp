#include "support.h"

namespace {

using std::literals::operator""s;
constexpr InstallState kStays = {INSTALLSTATE_LOCAL}, kComes = {INSTALLSTATE_ABSENT, INSTALLSTATE_LOCAL};
constexpr InstallState kGoes = {INSTALLSTATE_LOCAL, INSTALLSTATE_ABSENT};
constexpr char kPending[] = "PendingFileRenameOperations";
const std::string kSessionManager = "hklm\\SYSTEM\\CurrentControlSet\\Control\\Session Manager";

/// A package whose lists have old rows.
class ListsTest : public LibraryTest {
 protected:
  ListsTest() {
    world.tables["ListBox"] = {{"Property", "Order", "Value", "Text"}, {{"OTHER", 1, "1", "x"}}, 2};
    for (const char *list : {"ZQVPRODUCTPREREQLIST", "ZQVFEATUREPREREQLIST", "ZQVSUMMARYLIST"}) {
      rows.insert(rows.end(), {{list, 1, "old", "old"}, {list, 2, "old", "old"}, {list, 9, "old", "old"}});
    }
  }

  /// What an action lists: texts with a bar behind each. The rows are numbered from 1 on.
  std::string Listed(EntryPoint action, const std::string &list) {
    Run(action);
    std::string texts;
    int number = 0;
    for (const Row &row : rows) {
      if (row[0] == Cell{list}) {
        texts += std::get<std::string>(row[3]) + "|";
        EXPECT_EQ(row, Row({list, ++number, std::to_string(number), row[3]}));
      }
    }
    return texts;
  }

  std::vector<Row> &rows = world.tables["ListBox"].rows;
};

TEST_F(ListsTest, WhatTheProductNeeds) {
  const auto system = "Vantrel QV needs Windows 2000 or later.|"s;
  const auto stop = "Vantrel QV is running. Stop it before you install.|"s;
  const auto restart = "Windows has yet to replace or remove files of Vantrel QV. Restart it before you install.|"s;
  for (const auto &[given, pending, texts] :
       {std::tuple(""s, ""s, ""s),
        {"VersionNT=400", "", system},
        {"Privileged=", "", "Only an administrator can install Vantrel QV.|"},
        {"ZQVQVISRUNNING=1", "", stop},
        {"", "\\??\\C:\\a\0\0\\??\\c:\\QV\\\\bin\\a.dll\0\0\0"s, restart},
        {"", "\\??\\D:\\a\0!\\??\\C:\\qv\\a.dll"s, restart},
        {"ZQVPGMFOLDER= \"C:\\\\qv\" ", "\\??\\C:\\qv\0\0\0"s, restart},
        {"ZQVPGMFOLDER=\\\\s\\qv", "\\??\\unc\\S\\qv\\a\0\0\0"s, restart},
        {"", "\\??\\C:\\qv2\\a\0C:\\qv\\a\0\\??\\D:\\qv\\a\0!!\\??\\C:\\qv\\a\0\\??\\\0!\0\\??\\C:\\q"s, ""},
        {"ZQVPGMFOLDER=\"\"", "\\??\\C:\\qv\\a\0\\??\\\0\0"s, ""},
        {"VersionNT=|ZQVQVISRUNNING=1", "\\??\\C:\\qv\\a\0\0\0"s, system + stop + restart}}) {
    Set("VersionNT=500|Privileged=1|ZQVQVISRUNNING=|ZQVPGMFOLDER=C:\\qv\\");
    Set(given);
    world.registry[kSessionManager][kPending] = {REG_MULTI_SZ, pending};
    EXPECT_EQ(Listed(iwiListProductPrereqs, "ZQVPRODUCTPREREQLIST"), texts) << given << pending;
    EXPECT_EQ(Values({"ZQVPRODUCTPREREQ"}), texts.empty() ? "0|" : "1|");
  }
}

TEST_F(ListsTest, WhatFeaturesNeed) {
  using States = std::map<std::string, InstallState>;
  for (const auto &[states, texts] :
       {std::pair(States{{"Base", kGoes}, {"Server", kComes}}, "The feature Server needs the feature Base.|"),
        {{{"Base", kStays}, {"Server", kComes}, {"FTA_Server", kComes}, {"Client", kStays}, {"FTA_Client", kComes}},
         ""},
        {{{"FTA_Client", kComes}, {"Client", {}}, {"FTA_Server", kComes}, {"Server", kGoes}, {"Base", kStays}},
         "The feature FTA_Server needs the feature Server.|The feature FTA_Client needs the feature Client.|"},
        {{{"JavaMsg", kComes}, {"Toolkit", kComes}, {"Explorer", kComes}, {"Client", kComes}, {"Server", kStays}},
         "The feature Explorer needs the feature Base.|The feature Client needs the feature Base.|The feature JavaMsg "
         "needs the feature Base.|The feature Toolkit needs the feature Base.|"}}) {
    world.features = states;
    EXPECT_EQ(Listed(iwiListFeaturePrereqs, "ZQVFEATUREPREREQLIST"), texts);
    EXPECT_EQ(Values({"ZQVFEATUREPREREQ"}), *texts == '\0' ? "0|" : "1|");
  }
}

TEST_F(ListsTest, WhatIsAboutToBeDone) {
  Set("ZQVSETUPTITLE=QV "
      "Setup|ZQVPGMFOLDER=C:\\qv\\|ZQVDATFOLDER=C:\\data|ZQVLOGFOLDER=C:\\%1|ZQVUSERTRACEPATH=C:\\t.log");
  world.tables["Feature"].rows = {{"Server", {}, "The server"}, {"JavaMsg", {}, {}}, {"Client", "Base", "The client"}};
  world.features = {{"Server", kGoes}, {"Client", kComes}, {"JavaMsg", kComes}, {"Toolkit", {.action = kGoes.action}}};
  for (const std::string reason : {"", "ZQVBOOT=1", "ZQVBOOT=|ReplacedInUseFiles=1", "ReplacedInUseFiles="}) {
    Set(reason);
    world.registry[kSessionManager][kPending] = {REG_MULTI_SZ, reason.ends_with("=") ? "\\??\\C:\\qv\\a" : ""};
    EXPECT_EQ(
        Listed(iwiListInstallSummary, "ZQVSUMMARYLIST"),
        "QV Setup|Program folder: C:\\qv\\|Data folder: C:\\data|Log folder: C:\\%1|To be installed: The client|To "
        "be installed: JavaMsg|To be removed: The server|" +
            (reason.empty() ? "" : "Windows may have to be restarted.|"s) + "Trace log: C:\\t.log|");
  }
}

TEST_F(ListsTest, ListsAreCleared) {
  const std::vector<Row> old = rows;
  Run(iwiClearAllListboxes);
  EXPECT_EQ(rows, std::vector<Row>{old[0]});
  EXPECT_EQ(Values({"ZQVPRODUCTPREREQ", "ZQVFEATUREPREREQ"}), "0|0|");
  world.onCall = [&](auto) { rows = old; };
  ExpectRun(iwiClearAllListboxes, 0, {}, {"***There is no end of rows to delete: 'SELECT * FROM ListBox WHERE "});
  const auto taken = world.tables.extract("ListBox");
  for (const EntryPoint action : {iwiListProductPrereqs, iwiClearAllListboxes}) {
    ExpectRun(action, 0, "VersionNT=400", {": No ListBox table\n"});
    EXPECT_EQ(LogText().find("FROM ListBox"), std::string::npos);
    EXPECT_EQ(Values({"ZQVPRODUCTPREREQ"}), action == iwiClearAllListboxes ? "0|" : "1|");
  }
}

}  // namespace
