#include <algorithm>

#include "services/binary_stream.h"
#include "services/components.h"
#include "services/features.h"
#include "services/products.h"
#include "services/remove_file.h"
#include "services/source_path.h"
#include "services/table_row.h"
#include "support.h"

namespace {

class TablesTest : public LibraryTest {
 protected:
  TablesTest() {
    world.tables["Demo"].columns = {"Key", "Number", "Text"};
    world.tables["RemoveFile"].columns = {"FileKey", "Component_", "FileName", "DirProperty", "InstallMode"};
    world.tables["Component"].columns = {"Component"};
    world.tables["Binary"].columns = {"Name", "Data"};
    world.tables["File"].columns = {"File", "FileName"};
  }

  std::string Lines() { return TakeLog("(CaProlog)"); }

  void Fail(const char *call, int nth, DWORD code) {
    world.callCount.clear();
    world.failCall = {call, nth, code};
  }

  UINT AddDemoRow() {
    const FieldValue values[] = {"key", -2, ""};
    return iwiAddTableRow({"Demo", 2, values});
  }
};

TEST_F(TablesTest, ARowIsAddedWithJustTheCallsItNeeds) {
  EXPECT_EQ(AddDemoRow(), 0u);
  // Seven calls a line, and three for the run mode.
  EXPECT_EQ(world.calls - 7 * static_cast<int>(world.installerLog.size()) - 3, 11);
  EXPECT_EQ(Lines(), "Field 1 'key'\nField 1 '0xfffffffe'\nField 3 NULL\nTable 'Demo' row added; 3 fields\n");
  EXPECT_EQ(world.temporaryRows["Demo"], (std::vector<Row>{{"key", -2, {}}}));
}

TEST_F(TablesTest, AFailingCallOfARowIsLoggedAndItsCodeReturned) {
  const std::string first = "Field 1 'key'\nField 1 '0xfffffffe'\n", all = first + "Field 3 NULL\n";
  using Case = std::tuple<const char *, int, UINT, std::size_t>;  // the lines' own calls count too
  for (const auto &[call, nth, result, rows] :
       {Case("MsiGetActiveDatabase", 1, 1603, 0), Case("MsiDatabaseOpenViewA", 1, 87, 0),
        Case("MsiCreateRecord", 1, 1603, 0), Case("MsiRecordSetInteger", 1, 87, 1),
        Case("MsiRecordSetStringA", 4, 87, 0), Case("MsiViewModify", 1, 87, 0), Case("MsiCloseHandle", 4, 87, 1),
        Case("MsiViewClose", 1, 87, 1)}) {
    world.tables["Demo"].rows.clear();
    Fail(call, nth, 87);
    EXPECT_EQ(AddDemoRow(), result) << call;
    EXPECT_EQ(world.tables["Demo"].rows.size(), rows) << call;
  }
  EXPECT_EQ(Lines(),
            "***MsiGetActiveDatabase(Demo) failed\n"
            "***MsiDatabaseOpenView('SELECT * FROM Demo') failed (87)\n***MsiCreateRecord(Demo, 3) failed\n" +
                first + "***MsiRecordSetInteger('0xfffffffe') failed (87)\nField 3 NULL\n" + all +
                "***MsiRecordSetString('') failed (87)\n" + all +
                "***MsiViewModify('MSIMODIFY_INSERT_TEMPORARY') failed (87)\n" + all +
                "***MsiCloseHandle('') failed (87)\n" + all + "***MsiViewClose('') failed (87)\n");
  Fail("MsiRecordSetInteger", 0, 87);
  EXPECT_EQ(AddDemoRow(), 1627u) << "of two failures the last: a row with this key is there";
}

TEST_F(TablesTest, FilesAreStackedAndFoldersShareTheirProperty) {
  EXPECT_EQ(iwiStackFilesForDeletion("C:\\Data\\*.txt", "comp", 2), 0u);
  EXPECT_EQ(
      Lines(),
      "Stacking file(s) for deletion: 'C:\\Data\\*.txt'\nProperty 'ZQVRECORDCOUNTER' not defined in property table\n"
      "Property 'ZQVPROPERTYCOUNTER' not defined in property table\n"
      "Property 'ZQVPATHPROPERTY0' value set to 'C:\\Data\\'\nProperty 'ZQVPROPERTYCOUNTER' value set to '1'\n"
      "Field 1 'ZQV_Record_0'\nField 2 'comp'\nField 3 '*.txt'\nField 4 'ZQVPATHPROPERTY0'\n"
      "Field 4 '0x00000002'\nTable 'RemoveFile' row added; 5 fields\n"
      "Property 'ZQVRECORDCOUNTER' value set to '1'\n");
  EXPECT_EQ(iwiStackFolderForDeletion("C:\\DATA\\", "comp", 3), 0u);
  EXPECT_EQ(iwiStackFilesForDeletion("\\x", "comp", 1), 0u);
  for (const std::string path : {"readme.txt", "C:\\dir\\", ""}) {
    Lines();
    EXPECT_EQ(iwiStackFilesForDeletion(path, "comp", 1), 0u) << "deliberate: the row is added all the same";
    EXPECT_NE(Lines().find("\n***Invalid file path: '" + path + "'\n"), std::string::npos);
  }
  EXPECT_EQ(iwiStackFolderForDeletion("C:\\dir\\sub", "comp", 1), 1603u);
  EXPECT_TRUE(Lines().ends_with("'ZQVRECORDCOUNTER' value '6' from property table\n***Invalid path: 'C:\\dir\\sub'\n"));
  EXPECT_EQ(world.temporaryRows["RemoveFile"],
            (std::vector<Row>{{"ZQV_Record_0", "comp", "*.txt", "ZQVPATHPROPERTY0", 2},
                              {"ZQV_Record_1", "comp", {}, "ZQVPATHPROPERTY0", 3},
                              {"ZQV_Record_2", "comp", "x", "ZQVPATHPROPERTY1", 1},
                              {"ZQV_Record_3", "comp", {}, "ZQVPATHPROPERTY2", 1},
                              {"ZQV_Record_4", "comp", {}, "ZQVPATHPROPERTY2", 1},
                              {"ZQV_Record_5", "comp", {}, "ZQVPATHPROPERTY2", 1}}));
  EXPECT_EQ(world.properties["ZQVPATHPROPERTY1"], "\\");
}

TEST_F(TablesTest, TheRecordCounterMovesOnWheneverARowWasTried) {
  using Case = std::tuple<const char *, const char *, int, UINT, const char *, const char *>;
  for (const auto &[before, failing, nth, result, key, after] : {
           Case("x", "", 0, 0, "ZQV_Record_0", "1"),
           Case("-5", "", 0, 0, "ZQV_Record_-5", "-4"),
           Case("2147483647", "", 0, 0, "ZQV_Record_2147483647", "2147483647"),
           Case("41", "MsiGetPropertyA", 4, 1603, "", "41"),  // behind those of the first line
           Case("41", "MsiSetPropertyA", 1, 1603, "", "41"),  // the path property itself
           Case("41", "MsiSetPropertyA", 2, 1603, "", "41"),  // its counter
           Case("41", "MsiSetPropertyA", 3, 1603, "ZQV_Record_41", "41"),
           Case("41", "MsiViewModify", 1, 87, "", "42"),
       }) {
    Reload();
    world.properties["ZQVRECORDCOUNTER"] = before;
    std::vector<Row> &rows = world.tables["RemoveFile"].rows;
    rows.clear();
    Fail(failing, nth, 87);
    EXPECT_EQ(iwiStackFolderForDeletion("C:\\", "comp", 1), result) << failing << nth;
    EXPECT_EQ(rows.empty() ? Cell{""} : rows[0][0], Cell{key}) << failing << nth;
    EXPECT_EQ(world.properties["ZQVRECORDCOUNTER"], after);
  }
}

TEST_F(TablesTest, FeatureStatesAreSetAndFailuresAccumulate) {
  world.features["Server"] = {};
  UINT result = 0;
  iwiSetFeatureLocal("Lost", true, result);
  for (int state : {-1, 1, 3, 4, 5}) {
    EXPECT_EQ(iwiSetFeatureState("Server", static_cast<INSTALLSTATE>(state)), 0u);
  }
  iwiSetFeatureLocal("Server", false, result);
  EXPECT_EQ(result, 1603u);
  EXPECT_EQ(world.features["Server"].action, INSTALLSTATE_ABSENT);
  const std::string set = "'Server' feature state set to ";
  EXPECT_EQ(Lines(), "***MsiSetFeatureState(Lost, INSTALLSTATE_LOCAL) rc: 0x00000646\n" + set +
                         "INSTALLSTATE_UNKNOWN\n" + set + "INSTALLSTATE_ADVERTISED\n" + set + "INSTALLSTATE_LOCAL\n" +
                         set + "INSTALLSTATE_SOURCE\n" + set + "00000005\n" + set + "INSTALLSTATE_ABSENT\n");
}

TEST_F(TablesTest, TheFirstLocalComponentIsFoundOnceALoad) {
  world.tables["Component"].rows = {
      {std::string(515, 'u')}, {std::string(516, 'c')}, {"absent"}, {"local"}, {"second"}};
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
    const int before = world.callCount["MsiRecordReadStream"];
    EXPECT_EQ(iwiUnpackBinary("DATA", "", "C:\\temp\\out", nullptr), 1);
    EXPECT_EQ(world.ReadFile("C:\\temp\\out"), std::string(bytes.begin(), bytes.end()));
    EXPECT_EQ(world.callCount["MsiRecordReadStream"] - before, static_cast<int>(size / 256 + 1));
    EXPECT_EQ(Lines(), "Unpacking binary Name: 'DATA'\nComponent suffix is: 'bin'\nWritten " + std::to_string(size) +
                           " bytes to 'C:\\temp\\out'\n");
  }
}

TEST_F(TablesTest, BinaryNamesMatchByPrefixAndSuffix) {
  using Case = std::tuple<const char *, const char *, const char *>;
  for (const auto &[name, suffix, componentSuffix] :
       {Case("ABC", "", ""), Case("abc.x", "", "x"), Case("abcd", "", "?"), Case("ab", "", "?"), Case("xabc", "", "?"),
        Case("abc.DLL", ".dll", ""), Case("abc.dll.c.d", ".dll", "c.d"), Case("abc.dl", ".dll", "?")}) {
    world.tables["Binary"].rows = {{name, Bytes{1}}};
    std::string found = "?";
    EXPECT_EQ(iwiUnpackBinary("abc", suffix, "C:\\temp\\out", &found), *componentSuffix == '?' ? 0 : 1) << name;
    EXPECT_EQ(found, componentSuffix) << name;
  }
  world.tables["Binary"].rows = {{"a.1", Bytes{'1'}}, {"b", Bytes{'b'}}, {"a.2", Bytes{'2'}}};
  EXPECT_EQ(iwiUnpackBinary("a", "", "C:\\temp\\out", nullptr), 1);
  EXPECT_EQ(world.ReadFile("C:\\temp\\out"), "2") << "every match is written, over the same file";
}

TEST_F(TablesTest, WhatKeepsAStreamFromBeingUnpackedIsSaid) {
  world.tables["Binary"].rows = {{"a", Bytes(300)}, {"a.b", Bytes(300)}};
  for (const auto &[call, nth] :
       {std::pair("MsiGetActiveDatabase", 1), std::pair("MsiDatabaseOpenViewA", 1), std::pair("MsiViewExecute", 1),
        std::pair("MsiViewFetch", 1), std::pair("MsiRecordGetStringA", 0), std::pair("MsiRecordReadStream", 2),
        std::pair("OpenCFile", 1), std::pair("fwrite", 1)}) {
    Fail(call, nth, 87);
    EXPECT_EQ(iwiUnpackBinary("a", "", "C:\\temp\\out", nullptr), 0) << call;
    EXPECT_EQ(world.OpenHandles(), 0) << call;
  }
  const std::string begun = "Unpacking binary Name: 'a'\nNo component suffix\n", failed = " failed (87)\n",
                    unread = "***MsiRecordGetString('Name')" + failed, query = "('SELECT * FROM Binary')" + failed;
  EXPECT_EQ(Lines(), "***MsiGetActiveDatabase() failed\n***MsiDatabaseOpenView" + query + "***MsiViewExecute" + query +
                         "***MsiViewFetch" + query + unread + unread + "***Can't find binary Name: 'a'\n" + begun +
                         "***MsiRecordReadStream('a')" + failed + begun + "***Can't open output: 'C:\\temp\\out'\n" +
                         begun + "***Error writing 'C:\\temp\\out'\n");
}

TEST_F(TablesTest, SourcePathsAreMadeOfFolderAndLongName) {
  world.tables["File"].rows = {{"f1", "SHORT~1.TXT|long name.txt"}, {"f2", "plain.txt"}};
  world.sourcePaths["DIR"] = "C:\\src\\";
  world.WriteFile("C:\\src\\long name.txt", "");
  std::string path;
  UINT result = 99;
  EXPECT_EQ(iwiGetSourceFilePath("f1", "DIR", path, result), 1);
  EXPECT_EQ(path, "C:\\src\\long name.txt");
  EXPECT_EQ(iwiGetSourceFilePath("f2", "DIR", path, result), 0);
  EXPECT_EQ(path, "C:\\src\\plain.txt");
  EXPECT_EQ(result, 0u);
  for (const auto &[call, code] : {std::pair("MsiDatabaseOpenViewA", 87), std::pair("MsiViewExecute", 87),
                                   std::pair("MsiViewFetch", 259), std::pair("MsiRecordGetStringA", 234),
                                   std::pair("MsiGetSourcePathA", 267), std::pair("MsiGetSourcePathA", 234)}) {
    Fail(call, 0, static_cast<DWORD>(code));
    EXPECT_EQ(iwiGetSourceFilePath("f2", "DIR", path, result), 0);
    EXPECT_EQ(std::exchange(result, 0), 1603u);
    EXPECT_EQ(path, "");
  }
  const std::string query = ". Query 'SELECT FileName FROM File WHERE File='f2''\n",
                    file = "***File ID 'f2', file name 'plain.txt'\n";
  EXPECT_EQ(Lines(), "***MsiDatabaseOpenView() error 87" + query + "***MsiViewExecute() error 87" + query +
                         "***MsiViewFetch() error 259" + query + "***MsiRecordGetString(1) error 234" + query +
                         "***Unable to locate source path (267) for directory 'DIR'\n" + file +
                         "***MsiGetSourcePath() error 234. Directory 'DIR'\n" + file);
}

TEST_F(TablesTest, ARelatedProductCountsOnceItsNameIsRead) {
  const std::string code = "{8D1C5EA1-A4C5-4967-97FA-77FE6D4B5EA7}", named = "{" + std::string(36, '2') + "}";
  const std::string begin = "Searching for upgrade code '" + code + "'\nFound product 'nameless'\n";
  std::string product = "?";
  world.relatedProducts[code] = {"nameless"};
  EXPECT_EQ(iwiFindRelatedProduct(code, product), 0u);
  EXPECT_EQ(product, "");
  world.relatedProducts[code].push_back(named);
  world.productInfo[named]["InstalledProductName"] = "Vantrel QV";
  EXPECT_EQ(iwiFindRelatedProduct(code, product), 0u);
  EXPECT_EQ(product, named);
  EXPECT_EQ(Lines(),
            begin + " - Not installed\n" + begin + "Found product '" + named + "'\n - 'Vantrel QV' is installed\n");
}

TEST_F(TablesTest, ProductDataFollowsThePackagesOwnUpgradeCode) {
  const std::string client = "{5a8b5d80-6dcc-4317-9922-99ec0093bf24}", info = "{78156E97-B71F-491E-A6F4-44CB3C838860}",
                    unknown = "{62F00881-AC47-458F-BF38-2B84B38DBA50}";
  using Case = std::tuple<std::string, int, const char *, const char *, const char *>;
  for (const auto &[code, type, version, name, shown] :
       {Case(client, 2, nullptr, "Vantrel QV", "0.0"), Case(client, 3, "0.0.1", "Vantrel QV Client", "0.0"),
        Case(info, 3, "6.1", "static data error", "6.0"), Case(info, 9, "6.0", "", "6.0"),
        Case(unknown, 2, nullptr, "static data error", "Unknown")}) {
    Reload();
    world.properties["UpgradeCode"] = code;
    world.properties["ProductVersion"] = "6.0.0";
    EXPECT_EQ(iwiGetProductData(type, version), name);
    EXPECT_EQ(Lines(), "Property 'UpgradeCode' value '" + code + "' from property table\n" +
                           "Property 'ProductVersion' value '6.0.0' from property table\nType " + std::to_string(type) +
                           " product data is '" + name + "' (version '" + shown + "')\n");
  }
  Reload();
  world.properties["ProductVersion"] = std::string(260, 'x');
  bool isOwn = true;
  EXPECT_EQ(iwiIsOwnUpgradeCode(unknown, isOwn), 1603u);
  EXPECT_FALSE(isOwn);
}

}  // namespace
