#include "previous/uninstall_list.h"
#include "services/tables/remove_registry.h"
#include "support.h"

namespace {

using std::literals::operator""s;

const std::string kVersion = "Software\\Korvex\\QVSeries\\CurrentVersion", kLanguages = "Additional Languages\\";

/// An earlier version in C:\old, with documentation of all three formats.
class PreviousTest : public LibraryTest {
 protected:
  PreviousTest() {
    world.properties["ZQVPREVPGM"] = " \"C:\\old\\\" ";
    for (const char *format : {"chm", "pdf", "htm"}) {
      world.MakeFolder("C:\\old\\doc\\"s + format);
    }
    for (UINT id = 1; id <= 200; ++id) {
      components[world.ownModule.strings[id] = "name" + std::to_string(id)] = RegistryValue{REG_DWORD, "1234"};
    }
  }

  /// Of the lines that hold `text`, what stands behind it.
  static std::string Behind(const std::string &text, const std::string &lines) {
    std::string found;
    for (std::size_t at = lines.find(text); at != std::string::npos; at = lines.find(text, at + 1)) {
      found += lines.substr(at + text.size(), lines.find('\n', at) + 1 - at - text.size());
    }
    return found;
  }

  /// What processing a list of this text logs.
  std::string Process(std::string_view text) {
    world.tables["Binary"].rows = {{"CHMXX.u00", Bytes(text.begin(), text.end())}};
    DeletionGuard guard;
    ProcessUninstallList("chmxx", guard);
    EXPECT_EQ(world.Find("C:\\temp").node->entries.size(), 0u);
    return Lines();
  }

  NameMap<RegistryValue> &components = world.registry["hklm\\" + kVersion + "\\Components"];
  std::vector<Row> &removals = world.tables["RemoveRegistry"].rows;
};

TEST_F(PreviousTest, EachMemberHasItsOwnNames) {
  const std::tuple<EntryPoint, std::string, std::string, std::string, UINT, bool> members[] = {
      {iwiDeleteOldDe_de, "de_de", "DEDE", "German", 10, true},
      {iwiDeleteOldEn_us, "en_us", "ENUS", "English", 10, false},
      {iwiDeleteOldEs_es, "es_es", "ESES", "Spanish", 13, false},
      {iwiDeleteOldFr_fr, "fr_fr", "FRFR", "French", 11, false},
      {iwiDeleteOldIt_it, "it_it", "ITIT", "English", 14, false},
      {iwiDeleteOldJa_jp, "ja_jp", "JAJP", "English", 15, false},
      {iwiDeleteOldKo_kr, "ko_kr", "KOKR", "Korean", 16, true},
      {iwiDeleteOldPt_br, "pt_br", "PTBR", "Brazilian Portuguese", 18, false},
      {iwiDeleteOldZh_cn, "zh_cn", "ZHCN", "Traditional Chinese", 19, true},
      {iwiDeleteOldZh_tw, "zh_tw", "ZHTW", "Traditional Chinese", 17, false}};
  for (const auto &[action, code, decision, documents, slot, pdfFirst] : members) {
    components[kLanguages + code] = RegistryValue::Text("");
  }
  for (const auto &[action, code, decision, documents, slot, pdfFirst] : members) {
    std::string values, list = code + ".u00'\n";
    for (UINT block = 0; block < 10; ++block) {
      values += "'name" + std::to_string(20 * block + slot) + "'\n";
    }
    values += "'" + kLanguages + (code == "de_de" ? "en_us" : code) + "'\n";
    const std::string lists = pdfFirst ? "pdf" + list + "htm" + list : "htm" + list + "pdf" + list;
    for (const bool stays : {false, true}) {
      world.features["docs_" + code + "_eclipse"] = {INSTALLSTATE_LOCAL,
                                                     stays ? INSTALLSTATE_LOCAL : INSTALLSTATE_SOURCE};
      ExpectRun(action, 0, "ZQVDELOLD" + decision + "=old",
                {": Executing in script generation\n",
                 stays ? ": New feature replaces old\n" : ": Deleting old Additional " + documents + " Documents\n"});
      EXPECT_EQ(world.properties["ZQVDELOLD" + decision], stays ? "" : "1");
      const std::string log = LogText(), removal = "StackDeleteRegistryValue '" + kVersion + "\\Components' ";
      EXPECT_EQ(Behind(removal, log), stays ? "" : values);
      EXPECT_EQ(Behind("***Can't find binary Name: '", log), (stays ? "" : "chm" + list) + lists);
      EXPECT_EQ(Behind(": 'docs_", log), code + "_eclipse' Installed: 3 Action: " + (stays ? "3\n" : "4\n"));
    }
  }
  EXPECT_EQ(removals.size(), 110u);
}

TEST_F(PreviousTest, TheModeDecidesWhatAnActionDoes) {
  for (const auto &[mode, line] : {std::pair{16, "Deferred execution\n"}, {17, "Executing in rollback\n"}}) {
    world.modes = {mode};
    ExpectRun(iwiDeleteOldEn_us, 0);
    EXPECT_EQ(TakeLog("iwiDeleteOldEn_us"), line + "Returning with rc 0\n"s);
  }
  world.modes = {18};
  ExpectRun(iwiDeleteOldEn_us, 0, {},
            {"'docs_en_us_eclipse' Installed: -1 Action: -1\n",  // there is no such feature
             "SETPROPERTY('ZQVDELOLDENUS', '1') ignored during deferred execution\n",
             "SETPROPERTY('ZQVRECORDCOUNTER', '1') ignored during deferred execution\n"});
  world.modes = {};
  world.ownModule.strings[10].clear();
  world.ownModule.strings.erase(30);
  ExpectRun(iwiDeleteOldEn_us, 0, {}, {"***LoadString(10) failed (0)\n", "***LoadString(30) failed (1814)\n"});
  Fail("MsiSetPropertyA", 87, 1);
  ExpectRun(iwiDeleteOldEn_us, 1603, {}, {"***msiSetProperty('ZQVDELOLDENUS') value('1') failed (87)\n"});
}

TEST_F(PreviousTest, KeysNameTheirRootAndRowsAreNumbered) {
  std::vector<Row> rows;
  const std::tuple<std::string, int, std::string> keys[] = {{"HKEY_CLASSES_ROOT\\a\\b", 0, "a\\b"},
                                                            {"HKEY_CURRENT_USER\\HKEY_USERS\\a", 1, "HKEY_USERS\\a"},
                                                            {"HKEY_LOCAL_MACHINE\\a", 2, "a"},
                                                            {"HKEY_USERS\\a", 3, "a"},
                                                            {"HKEY_USERS", 2, "HKEY_USERS"},
                                                            {"hkey_users\\a", 2, "hkey_users\\a"},
                                                            {"HKEY_CURRENT_CONFIG\\a", 2, "HKEY_CURRENT_CONFIG\\a"},
                                                            {"\\HKEY_USERS\\a", 2, "\\HKEY_USERS\\a"}};
  for (const auto &[key, root, below] : keys) {
    EXPECT_EQ(StackDeleteRegistryValue(key, " ", "comp"), 0u);
    rows.push_back({"ZQVRECORD" + std::to_string(rows.size()), root, below, " ", "comp"});
  }
  EXPECT_EQ(removals, rows);
  world.properties["ZQVRECORDCOUNTER"] = std::string(53, '0') + "2147483646";  // the longest text that is read
  for (const UINT result : {0u, 0u, 1627u}) {  // the counter stays at its largest number, and that row is there
    EXPECT_EQ(StackDeleteRegistryValue(std::string(5000, 'k'), "b", "c"), result);
  }
  world.properties["ZQVRECORDCOUNTER"] = std::string(64, '0');
  EXPECT_EQ(StackDeleteRegistryValue("a", "b", "c"), 1603u);
  EXPECT_EQ(removals.size(), rows.size() + 2);
}

TEST_F(PreviousTest, AListStacksWhatIsBelowItsFolders) {
  world.properties["ZQVPREVDAT"] = "C:\\data\\";
  const std::string longest(256, 'x'), blanks(300, ' '), end = "'\n", file = "file(s) for deletion: 'C:\\";
  const std::string log =
      Process(" \t ; c\r\n#c\n\n \t\n\ta b\\*.chm \r\nPGM,doc\\\nDAT,x\nTMP,y\\z\npgm,n\n..a\n" + blanks + "PGM," +
              longest + blanks + "\r\n;" + longest + "12345\n12345" + longest + "\n..\\a\na\\.. \\b\n\\a\n" +
              "DAT,c:a\nPGM,\na\0b\na\x1A\na\rb\nx/a\nx*\\a\nx?\\\nlast"s);
  const std::string left = "' leaves the folder 'C:\\", below = left + "old'\n", bad = " of list 'chmxx' is no path\n";
  std::string lines = "13 of list 'chmxx' is longer than a path\n";
  for (int number = 18; number <= 24; ++number) {
    lines += std::to_string(number) + bad;
  }
  EXPECT_EQ(Behind("***Line ", log), lines);
  EXPECT_EQ(Behind("***Path ", log),
            "'..\\a" + below + "'a\\.. \\b" + below + "'\\a" + below + "'c:a" + left + "data'\n");
  EXPECT_EQ(Behind("Stacking ", log), file + "old\\a b\\*.chm'\nfolder for deletion: 'C:\\old\\doc\\'\n" + file +
                                          "data\\x'\n" + file + "temp\\y\\z'\n" + file + "old\\pgm,n'\n" + file +
                                          "old\\..a'\n" + file + "old\\" + longest + end + file + "old\\last'\n");
  EXPECT_EQ(world.tables["RemoveFile"].rows[1], (Row{"ZQV_Record_1", "Base_base", {}, "ZQVPATHPROPERTY1", 1}));
  Reload();
  world.properties["ZQVPREVPGM"] = "";
  EXPECT_NE(Process("..\\a\nb\\").find("table\nNo folder for '..\\a'\nNo folder for 'b\\'\nDeleted"),
            std::string::npos);
  Reload();
  world.registry["hklm\\" + kVersion]["PgmFolder"] = RegistryValue::Text("C:\\known\\");
  EXPECT_NE(Process("a").find("'C:\\known\\a'\n"), std::string::npos);
  Fail("MsiRecordReadStream", 87);
  EXPECT_TRUE(Process("a").ends_with("failed (87)\nDeleted file: 'C:\\temp\\zqvu0001.txt'\n"));
}

TEST_F(PreviousTest, LargeListsAreSurvived) {
  std::string text;
  for (int i = 0; i < 1000000; ++i) {
    text += i % 100000 == 0 ? "a\n" : i % 2 == 0 ? "; passed over\r\n" : "\n";
  }
  Process(text);
  EXPECT_EQ(world.tables["RemoveFile"].rows.size(), 10u);
}

}  // namespace
