#include <algorithm>

#include "services/files/source_path.h"
#include "services/tables/binary_stream.h"
#include "services/tables/components.h"
#include "services/tables/feature_state.h"
#include "services/tables/products.h"
#include "services/tables/remove_file.h"
#include "services/tables/table_row.h"
#include "support.h"

namespace {

class TablesTest : public LibraryTest {
 protected:
  TablesTest() { world.tables["Demo"].columns = {"Key", "Number", "Text"}; }

  UINT AddDemoRow() {
    const FieldValue values[] = {"key", -2, ""};
    return iwiAddTableRow({"Demo", values});
  }
};

TEST_F(TablesTest, ARowIsAddedAndAFailingCallLoggedAndItsCodeReturned) {
  EXPECT_EQ(AddDemoRow(), 0u);
  EXPECT_EQ(Lines(), "Field 1 'key'\nField 1 '0xfffffffe'\nField 3 NULL\nTable 'Demo' row added; 3 fields\n");
  EXPECT_EQ(world.tables["Demo"].rows, (std::vector<Row>{{"key", -2, {}}}));
  const std::string one = "Field 1 'key'\nField 1 '0xfffffffe'\n", all = one + "Field 3 NULL\n",
                    failed = " failed (87)\n";
  const std::tuple<const char *, int, UINT, std::size_t, std::string> cases[] = {
      // the lines' own calls count too
      {"MsiGetActiveDatabase", 1, 1603, 0, "***MsiGetActiveDatabase(Demo) failed\n"},
      {"MsiDatabaseOpenViewA", 1, 87, 0, "***MsiDatabaseOpenView('SELECT * FROM Demo')" + failed},
      {"MsiCreateRecord", 1, 1603, 0, "***MsiCreateRecord(Demo, 3) failed\n"},
      {"MsiRecordSetInteger", 1, 87, 1, one + "***MsiRecordSetInteger('0xfffffffe')" + failed + "Field 3 NULL\n"},
      {"MsiRecordSetStringA", 4, 87, 0, all + "***MsiRecordSetString('')" + failed},
      {"MsiViewModify", 1, 87, 0, all + "***MsiViewModify('MSIMODIFY_INSERT_TEMPORARY')" + failed},
      {"MsiCloseHandle", 4, 87, 1, all + "***MsiCloseHandle('')" + failed},
      {"MsiViewClose", 1, 87, 1, all + "***MsiViewClose('')" + failed}};
  for (const auto &[call, nth, result, rows, lines] : cases) {
    world.tables["Demo"].rows.clear();
    Fail(call, 87, nth);
    EXPECT_EQ(AddDemoRow(), result) << call;
    EXPECT_EQ(world.tables["Demo"].rows.size(), rows) << call;
    EXPECT_EQ(Lines(), lines);
  }
  Fail("MsiRecordSetInteger", 87);
  EXPECT_EQ(AddDemoRow(), 1627u) << "of two failures the last: a row with this key is there";
}

TEST_F(TablesTest, FilesAreStackedAndFoldersShareTheirProperty) {
  EXPECT_EQ(iwiStackFilesForDeletion("C:\\Data\\*.txt", "comp", 2), 0u);
  EXPECT_EQ(Lines(), R"(Stacking file(s) for deletion: 'C:\Data\*.txt'
Property 'ZQVRECORDCOUNTER' not defined in property table
Property 'ZQVPROPERTYCOUNTER' not defined in property table
Property 'ZQVPATHPROPERTY0' value set to 'C:\Data\'
Property 'ZQVPROPERTYCOUNTER' value set to '1'
Field 1 'ZQV_Record_0'
Field 2 'comp'
Field 3 '*.txt'
Field 4 'ZQVPATHPROPERTY0'
Field 4 '0x00000002'
Table 'RemoveFile' row added; 5 fields
Property 'ZQVRECORDCOUNTER' value set to '1'
)");
  EXPECT_EQ(iwiStackFolderForDeletion("C:\\DATA\\", "comp", 3), 0u);
  EXPECT_EQ(iwiStackFilesForDeletion("\\x", "comp", 1), 0u);
  for (const std::string path : {"readme.txt", "C:\\dir\\", ""}) {
    Lines();
    EXPECT_EQ(iwiStackFilesForDeletion(path, "comp", 1), 0u) << "deliberate: the row is added all the same";
    EXPECT_NE(Lines().find("\n***Invalid file path: '" + path + "'\n"), std::string::npos);
  }
  EXPECT_EQ(iwiStackFolderForDeletion("C:\\dir\\sub", "comp", 1), 1603u);
  EXPECT_TRUE(Lines().ends_with("'ZQVRECORDCOUNTER' value '6' from property table\n***Invalid path: 'C:\\dir\\sub'\n"));
  EXPECT_EQ(world.tables["RemoveFile"].rows, (std::vector<Row>{{"ZQV_Record_0", "comp", "*.txt", "ZQVPATHPROPERTY0", 2},
                                                               {"ZQV_Record_1", "comp", {}, "ZQVPATHPROPERTY0", 3},
                                                               {"ZQV_Record_2", "comp", "x", "ZQVPATHPROPERTY1", 1},
                                                               {"ZQV_Record_3", "comp", {}, "ZQVPATHPROPERTY2", 1},
                                                               {"ZQV_Record_4", "comp", {}, "ZQVPATHPROPERTY2", 1},
                                                               {"ZQV_Record_5", "comp", {}, "ZQVPATHPROPERTY2", 1}}));
  EXPECT_EQ(world.properties["ZQVPATHPROPERTY1"], "\\");
}

TEST_F(TablesTest, TheRecordCounterMovesOnWheneverARowWasTried) {
  const std::tuple<const char *, const char *, int, UINT, const char *, const char *> cases[] = {
      {"x", "", 0, 0, "ZQV_Record_0", "1"},
      {"-5", "", 0, 0, "ZQV_Record_-5", "-4"},
      {"2147483647", "", 0, 0, "ZQV_Record_2147483647", "2147483647"},
      {"41", "MsiGetPropertyA", 4, 1603, "", "41"},  // behind those of the first line
      {"41", "MsiSetPropertyA", 1, 1603, "", "41"},  // the path property itself
      {"41", "MsiSetPropertyA", 2, 1603, "", "41"},  // its counter
      {"41", "MsiSetPropertyA", 3, 1603, "ZQV_Record_41", "41"},
      {"41", "MsiViewModify", 1, 87, "", "42"}};
  for (const auto &[before, failing, nth, result, key, after] : cases) {
    Reload();
    world.properties["ZQVRECORDCOUNTER"] = before;
    std::vector<Row> &rows = world.tables["RemoveFile"].rows;
    rows.clear();
    Fail(failing, 87, nth);
    EXPECT_EQ(iwiStackFolderForDeletion("C:\\", "comp", 1), result) << failing << nth;
    EXPECT_EQ(rows.empty() ? Cell{""} : rows[0][0], Cell{key}) << failing << nth;
    EXPECT_EQ(world.properties["ZQVRECORDCOUNTER"], after);
  }
  world.tables["RemoveFile"].rows = {{"ZQV_Record_42"}};
  Fail("MsiSetPropertyA", 87);
  EXPECT_EQ(iwiStackFolderForDeletion("C:\\", "comp", 1), 1603u) << "the counter's failure, not the row's";
}

TEST_F(TablesTest, FeatureStatesHaveTheirNames) {
  world.features["F"];
  for (const auto &[number, name] :
       Properties("-1=INSTALLSTATE_UNKNOWN|1=INSTALLSTATE_ADVERTISED|2=INSTALLSTATE_ABSENT|3=INSTALLSTATE_LOCAL|"
                  "4=INSTALLSTATE_SOURCE|5=00000005|-4=fffffffc|0=00000000")) {
    const auto state = static_cast<INSTALLSTATE>(std::stoi(number));
    static_cast<void>(iwiSetFeatureState("F", state));
    EXPECT_EQ(Lines(), "'F' feature state set to " + name + "\n");
    EXPECT_EQ(world.features["F"].action, state);
  }
}

TEST_F(TablesTest, ARelatedProductCountsWhenItsNameCanBeRead) {
  const std::string upgrade = "{8D1C5EA1-A4C5-4967-97FA-77FE6D4B5EA7}", lost(38, '1'), known(38, '2');
  const std::string found = "Found product '" + lost + "'\n", longest(514, 'n');
  world.relatedProducts[upgrade] = {lost, known, lost};
  for (const auto &[name, result, line] : {std::tuple(longest, known, " - '" + longest + "' is installed\n"),
                                           {longest + "n", "", found + " - Not installed\n"}}) {
    world.productInfo[known]["InstalledProductName"] = name;
    std::string product = "old";
    iwiFindRelatedProduct(upgrade, product);
    EXPECT_EQ(product, result);
    EXPECT_EQ(Lines(),
              "Searching for upgrade code '" + upgrade + "'\n" + found + "Found product '" + known + "'\n" + line);
  }
}

TEST_F(TablesTest, AFoldersPropertyStaysItsOwn) {
  std::vector<Row> &rows = world.tables["RemoveFile"].rows;
  for (const int failing : {1, 2}) {  // the property, its counter
    Reload();
    rows.clear();
    Fail("MsiSetPropertyA", 87, failing);
    EXPECT_EQ(iwiStackFolderForDeletion("C:\\a\\", "comp", 1), 1603u);
    world.failCall = {};
    EXPECT_EQ(iwiStackFolderForDeletion("C:\\b\\", "comp", 1) + iwiStackFolderForDeletion("C:\\a\\", "comp", 1), 0u);
    EXPECT_EQ(world.properties[std::get<std::string>(rows[0][3])], "C:\\b\\");
    EXPECT_EQ(world.properties[std::get<std::string>(rows[1][3])], "C:\\a\\");
  }
  Reload();
  world.properties["ZQVPROPERTYCOUNTER"] = "2147483647";
  EXPECT_EQ(iwiStackFolderForDeletion("C:\\c\\", "comp", 1), 1603u);
  ExpectInLog({"***No path property left for 'C:\\c\\'\n"});
}

TEST_F(TablesTest, TheFirstLocalComponentIsFoundOnceALoad) {
  world.tables["Component"].rows = {
      {std::string(515, 'u')}, {std::string(516, 'c')}, {"absent"}, {"source"}, {"default"}, {"local"}, {"second"}};
  world.components["source"].action = INSTALLSTATE_SOURCE;
  world.components["default"].action = INSTALLSTATE_DEFAULT;
  world.components["absent"] = {INSTALLSTATE_LOCAL, INSTALLSTATE_ABSENT};
  world.components["local"] = world.components["second"] = {INSTALLSTATE_ABSENT, INSTALLSTATE_LOCAL};
  EXPECT_EQ(iwiFindLocalComponent("default"), "local");
  EXPECT_EQ(Lines(), "***MsiGetComponentState('" + std::string(515, 'u') +
                         "') failed (1607)\n***MsiRecordGetString('Component') failed (234)\n"
                         "Component 'local' Installed: 2 Action: 3\n");
  Reload();
  world.components.clear();
  EXPECT_EQ(iwiFindLocalComponent("default"), "default");
  EXPECT_EQ(iwiFindLocalComponent("other"), "default");
  EXPECT_EQ(world.callCount["MsiDatabaseOpenViewA"], 2);
}

TEST_F(TablesTest, StreamsOfEverySizeAreUnpackedWithOneReadABlock) {
  for (const std::size_t size : {0u, 255u, 256u, 257u, 512u, 100000u}) {
    Bytes bytes(size);
    std::generate(bytes.begin(), bytes.end(), [n = 0u]() mutable { return static_cast<BYTE>(n++ % 251); });
    world.tables["Binary"].rows = {{"data.bin", bytes}};
    world.callCount.clear();
    EXPECT_TRUE(iwiUnpackBinary("DATA", "", "C:\\temp\\out", nullptr));
    EXPECT_EQ(world.ReadFile("C:\\temp\\out"), std::string(bytes.begin(), bytes.end()));
    EXPECT_EQ(world.callCount["MsiRecordReadStream"], static_cast<int>(size / 256 + 1));
    EXPECT_EQ(Lines(), "Unpacking binary Name: 'DATA'\nComponent suffix is: 'bin'\nWritten " + std::to_string(size) +
                           " bytes to 'C:\\temp\\out'\n");
  }
}

TEST_F(TablesTest, BinaryNamesMatchByPrefixAndSuffix) {
  // By suffix, the names, and what stands behind the suffix; "?" where there is no match.
  const std::pair<const char *, Properties> matches[] = {{"", "ABC=|abc.x=x|abcd=?|ab=?|xabc=?"},
                                                         {".dll", "abc.DLL=|abc.dll.c.d=c.d|abc.dl=?"}};
  for (const auto &[suffix, names] : matches) {
    for (const auto &[name, componentSuffix] : names) {
      world.tables["Binary"].rows = {{name, Bytes{1}}};
      std::string found = "?";
      EXPECT_EQ(iwiUnpackBinary("abc", suffix, "C:\\temp\\out", &found), componentSuffix != "?") << name;
      EXPECT_EQ(found, componentSuffix) << name;
    }
  }
  world.tables["Binary"].rows = {{"a.1", Bytes{'1'}}, {"b", Bytes{'b'}}, {"a.2", Bytes{'2'}}};
  EXPECT_TRUE(iwiUnpackBinary("a", "", "C:\\temp\\out", nullptr));
  EXPECT_EQ(world.ReadFile("C:\\temp\\out"), "2") << "every match is written, over the same file";
}

TEST_F(TablesTest, SourcePathsAreMadeOfFolderAndLongName) {
  world.tables["File"].rows = {{"f1", "SHORT~1.TXT|long name.txt"}, {"f2", "plain.txt"}};
  world.sourcePaths["DIR"] = "C:\\src\\";
  world.WriteFile("C:\\src\\long name.txt", "");
  std::string path;
  UINT result = 99;
  EXPECT_TRUE(iwiGetSourceFilePath("f1", "DIR", path, result));
  EXPECT_EQ(path, "C:\\src\\long name.txt");
  EXPECT_FALSE(iwiGetSourceFilePath("f2", "DIR", path, result));
  EXPECT_EQ(path, "C:\\src\\plain.txt");
  EXPECT_EQ(result, 0u);
  Fail("MsiGetSourcePathA", 234);
  EXPECT_FALSE(iwiGetSourceFilePath("f2", "DIR", path, result));
  EXPECT_EQ(path + std::to_string(result), "1603");
  EXPECT_EQ(Lines(), "***MsiGetSourcePath() error 234. Directory 'DIR'\n***File ID 'f2', file name 'plain.txt'\n");
}

TEST_F(TablesTest, ProductDataFollowsThePackagesOwnUpgradeCode) {
  const std::string server = "{8D1C5EA1-A4C5-4967-97FA-77FE6D4B5EA7}",
                    client = "{5a8b5d80-6dcc-4317-9922-99ec0093bf24}", xa = "{F6AEC289-3597-4BA4-AEC1-C10A07FE6923}",
                    info = "{78156E97-B71F-491E-A6F4-44CB3C838860}", eclipse = "{D4CF8FDC-BD09-4FF4-8964-56BC7D912D8C}",
                    unknown = "{62F00881-AC47-458F-BF38-2B84B38DBA50}";
  const char *const none = nullptr, *const qv = "Vantrel QV", *const error = "static data error";
  const std::tuple<std::string, int, const char *, const char *, const char *> cases[] = {
      {server, 2, "0.0", qv, "0.0"},
      {server, 3, "0.", error, "0.0"},
      {server, 3, none, qv, "0.0"},
      {xa, 3, "0.0", "Vantrel QV XA Client", "0.0"},
      {info, 2, "6.0.2", "Vantrel QV Info", "6.0"},
      {eclipse, 3, none, "Eclipse SDK", "3.0"},
      {client, 2, none, qv, "0.0"},
      {client, 3, "0.0.1", "Vantrel QV Client", "0.0"},
      {info, 3, "6.1", error, "6.0"},
      {info, 9, "6.0", "", "6.0"},
      {unknown, 2, none, error, "Unknown"}};
  for (const auto &[code, type, version, name, shown] : cases) {
    Reload();
    Set("ProductVersion=6.0.0|UpgradeCode=" + code);
    EXPECT_EQ(iwiGetProductData(type, version), name);
    EXPECT_EQ(Lines(), "Property 'UpgradeCode' value '" + code + "' from property table\n" +
                           "Property 'ProductVersion' value '6.0.0' from property table\nType " + std::to_string(type) +
                           " product data is '" + name + "' (version '" + shown + "')\n");
  }
  Reload();
  world.properties["ProductVersion"] = std::string(260, 'x');
  bool isOwn = true;
  EXPECT_FALSE(iwiIsOwnUpgradeCode(unknown, isOwn));
  EXPECT_FALSE(isOwn);
}

}  // namespace
