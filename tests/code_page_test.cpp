#include "base/code_page.h"
#include "base/path.h"
#include "previous/uninstall_list.h"
#include "running/process_image.h"
#include "runtime/path_property.h"
#include "runtime/temp_name.h"
#include "services/files/copy.h"
#include "services/files/create.h"
#include "services/files/delete.h"
#include "services/files/existence.h"
#include "services/files/source_path.h"
#include "services/system/process.h"
#include "services/tables/binary_stream.h"
#include "services/tables/remove_file.h"
#include "support.h"

namespace {

using CodePageTest = LibraryTest;

std::string Tidy(PathEnd end, std::string path) { return iwiTidyPath(end, path); }

// Names that end in the byte of a backslash.
TEST_F(CodePageTest, TheSecondHalfOfACharacterIsNoBackslash) {
  const std::pair<unsigned, std::string> names[] = {
      {932, "\x83\x5C"}, {932, "x\x95\x5C"}, {932, "\x94\x5C"}, {936, "\x81\x5C"}, {950, "\xA5\x5C"}};
  for (const auto &[page, name] : names) {
    World::codePage = page;
    Reload();
    const std::string folder = "C:\\" + name, in = folder + "\\", file = in + name, copy = in + "b\\" + name;
    std::string found;

    for (const auto &[path, bare] : {std::pair(folder, folder), {in, folder}, {folder + "\\\\\\" + name, file}}) {
      EXPECT_EQ(Tidy(kWithoutBackslash, path), bare);
      EXPECT_EQ(Tidy(kWithBackslash, path), bare + "\\");
    }
    EXPECT_EQ(iwiCreateFolderTree(file + "\\"), 0);
    EXPECT_EQ(iwiCreateFolderTree("\\\\" + name + "\\" + name + "\\"), 1);
    EXPECT_EQ(Lines(), "Created '" + folder + "'\nCreated '" + file + "'\n");
    EXPECT_EQ(iwiFindExtension(folder, found) + iwiFolderExists(file), 2);
    EXPECT_EQ(found, name);
    EXPECT_EQ(iwiRemoveFolderNow(file), 1);
    world.WriteFile(file, name);
    Lines();
    EXPECT_EQ(iwiCopyPattern(folder, copy, "*", false), 0u);
    EXPECT_TRUE(Lines().find("Created '" + in + "b'\nCreated '" + copy + "'\n") != std::string::npos);
    EXPECT_EQ(world.ReadFile(copy + "\\" + name), name);
    EXPECT_EQ(iwiFileExists(file), 1);
    Fail("FindFirstFileA", 5);
    EXPECT_FALSE(iwiFileExists(name) || iwiDeletePattern({.execute = true, .path = name, .deleteFiles = true}));
    Fail("", 0);

    std::vector<Row> &rows = world.tables["RemoveFile"].rows;
    rows.clear();
    world.properties["ZQVPREVPGM"] = folder;
    world.tables["Binary"].rows = {{"x.u00", Bytes()}};
    for (const char c : name + "\\\n" + name + "..\\x") {
      std::get<Bytes>(world.tables["Binary"].rows[0][1]).push_back(static_cast<BYTE>(c));
    }
    DeletionGuard guard;
    ProcessUninstallList("x", guard);
    EXPECT_TRUE(iwiDeleteFolder({.countOnly = true, .path = file}) && iwiDeleteFile({.path = file}));
    EXPECT_EQ(iwiStackFilesForDeletion(name, "c", 1), 0u);
    std::string stacked;
    for (const Row &row : rows) {
      const std::string *const last = std::get_if<std::string>(&row[2]);
      stacked += world.properties[std::get<std::string>(row[3])] + "|" + (last != nullptr ? *last : "") + "\n";
    }
    EXPECT_EQ(stacked, file + "\\|\n" + in + name + "..\\|x\n" + file + "\\|\n" + in + "|" + name + "\n|\n");

    world.WriteFile(in + "p.exe", "");
    world.programs[in + "p.exe"] = world.programs[name] = {};
    EXPECT_TRUE(iwiLaunch(in + "p.exe", "", "", 0, nullptr) && iwiLaunch(name, "", "", 0, nullptr));
    std::string folders;
    for (const Launch &launch : std::exchange(world.launched, {})) {
      folders += launch.folder + "|";
    }
    EXPECT_EQ(folders, folder + "||");

    EXPECT_TRUE(iwiDeletePattern(
        {.execute = true, .path = in + "*", .deleteFiles = true, .removeFolders = true, .recurse = true}));
    EXPECT_FALSE(world.Exists(folder));

    world.tables["File"].rows = {{"f", "\x83\x7C~1|\x83\x7Cx"}};
    world.sourcePaths["DIR"] = in;
    UINT result = 0;
    EXPECT_FALSE(iwiGetSourceFilePath("f", "DIR", found, result));
    EXPECT_EQ(found, in + "\x83\x7Cx");
    Reload();
    world.MakeFolder(folder);
    world.properties["ZQVTEMP"] = in;
    EXPECT_EQ(TempName(false, "t", ""), in + "t0001");
    world.properties["ZQVEXTCA60000"] = folder;
    iwiUserExit(kSession);
    ExpectInLog({"Can't find '" + in + "zqviwicn.dll'\n"});
    world.properties.erase("ZQVEXTCA60000");
    world.properties["ZQVTEMP"] = "C:\\temp";
    world.Remove(folder);
  }
}

// By operation, two names that the file system takes for one, or not. All bytes are those of the code page.
TEST_F(CodePageTest, NamesAreComparedAsTheFileSystemDoes) {
  const struct {
    unsigned page;
    std::string a, b;
    bool equal;
  } rows[] = {{1252, "\xE9x", "\xC9X", true},       {1252, "\xF7", "\xD7", false},
              {1252, "a\x81", "A\x81", true},       {1252, "\x81", "\x8D", false},
              {932, "\x83\x4A", "\x83\x6A", false}, {932, "\x83\x4Aq", "\x83\x4AQ", true},
              {932, "a\x83", "A\x83", true},        {932, "\x83", "\x83\x4A", false},
              {949, "\x81\x41", "\x81\x61", false}, {1252, "", "\xE9", false}};
  for (const auto &[page, a, b, equal] : rows) {
    World::codePage = page;
    Reload();
    const auto check = [&](const char *what, bool found) { EXPECT_EQ(found, equal) << what << a << " " << b; };
    check("EqualName", EqualName(a, b) && EqualName(b, a));
    check("StartsWithName", StartsWithName(a + "x", b) && !a.empty());
    std::string name, other;
    world.properties["ZQVPROPERTYCOUNTER"] = "";
    EXPECT_TRUE(GetPathProperty("C:\\" + a + "\\", name) && GetPathProperty("C:\\" + b + "\\", other));
    check("GetPathProperty", name == other);
    world.tables["Binary"].rows = {{a, Bytes{1}}};
    check("iwiUnpackBinary", !a.empty() && iwiUnpackBinary(b, "", "C:\\temp\\out", nullptr));
    if (!a.empty() && a.back() > 0) {
      world.WriteFile("C:\\x\\" + a, "");
      check("iwiFileExists", iwiFileExists("C:\\x\\" + b) == 1);
      world.Remove("C:\\x");
      world.MakeFolder("C:\\x\\" + a);
      check("iwiFolderExists", iwiFolderExists("C:\\x\\" + b) == 1);
      check("iwiFindExtension", iwiFindExtension("C:\\x\\" + b, name) == 1);
      world.Remove("C:\\x");
      world.MakePsapi("C:\\temp\\psapi.dll");
      world.processes = {{7, "C:\\x\\" + a}};
      world.held = {"C:\\y\\" + b};
      world.WriteFile("C:\\y\\" + b, "");
      iwiTerminateProcessByImage("C:\\y", b.c_str());
      check("iwiTerminateProcessByImage", world.processes.empty());
      world.Remove("C:\\y");
    }
  }
}

}  // namespace
