#include "runtime/log.h"

#include "runtime/actions/log_actions.h"
#include "runtime/temp_name.h"
#include "support.h"

namespace {

using LogTest = LibraryTest;

TEST_F(LogTest, ALineGoesToEachLogThatCanBeOpened) {
  Set("ZQVUSERTRACEPATH= \"C:\\temp\\trace.log\" |ZQVUSERLOGPATH=C:\\temp|ZQVTEMPLOGPATH=Q:\\third.txt");
  LogLine("%s %n 100%");
  world.held.insert("C:\\temp\\trace.log");
  LogLine("lost");
  world.held.clear();
  LogLine("***trouble");
  LogRaw("\n>>raw");
  EXPECT_EQ(Text("C:\\temp\\trace.log"),
            "10:25:15 QVCA info (CaProlog): %s %n 100%\r\n"
            "10:25:15 QVCA info (CaProlog): ***trouble\r\n"
            "\r\n>>raw\r\n");
  EXPECT_EQ(world.installerLog.size(), 4u);
  Reload();
  world.properties["ZQVTEMPLOGPATH"] = std::string(260, 'x');  // cannot be read: the line goes to no file at all
  LogLine("line");
  EXPECT_TRUE(Text("C:\\temp\\trace.log").ends_with(">>raw\r\n"));
  EXPECT_EQ(world.installerLog.size(), 1u);
  Reload();
  world.properties["ZQVTEMPLOGPATH"] = "";
  for (const char *call : {"MsiCreateRecord", "MsiRecordSetStringA"}) {  // the files have the line all the same
    Fail(call, 1627);
    LogRaw(call);
  }
  EXPECT_TRUE(world.installerLog.empty());
  EXPECT_TRUE(Text("C:\\temp\\trace.log").ends_with("MsiCreateRecord\r\nMsiRecordSetStringA\r\n"));
}

TEST_F(LogTest, TheThirdLogCanMoveToTheDataFolderAndRetire) {
  Set("ZQVTEMPLOGPATH=C:\\temp\\third.txt|ZQVDATFOLDER=C:\\data\\");
  world.MakeFolder("C:\\data");
  LogRaw("one");
  UseDataFolderLog();
  LogRaw("two");
  EXPECT_EQ(Text("C:\\temp\\third.txt"), "one\r\n");
  EXPECT_EQ(Text("C:\\data\\zqvmjpse.txt"), "two\r\n");
  RetireTempLog();
  LogRaw("three");  // the data folder's log still
  Reload();
  RetireTempLog();
  LogRaw("four");
  EXPECT_EQ(Text("C:\\temp\\third.txt"), "one\r\n");
  EXPECT_EQ(Text("C:\\data\\zqvmjpse.txt"), "two\r\nthree\r\n");
}

TEST_F(LogTest, TempNamesTakeTheFirstFreeNumber) {
  world.WriteFile("C:\\temp\\zqvt0001.log", "");
  EXPECT_EQ(TempName(false, "zqvt", ".log"), "C:\\temp\\zqvt0002.log");
  EXPECT_TRUE(world.Exists("C:\\temp\\zqvt0002.log"));
  EXPECT_EQ(world.properties.count("ZQVTEMPFILENUM"), 0u);
  EXPECT_EQ(TempName(true, "zqvt", ".log"), "C:\\temp\\zqvt0003.log");
  EXPECT_EQ(world.properties["ZQVTEMPFILENUM"], "0003");
  EXPECT_EQ(TempName(true, "zqvg", ".txt"), "C:\\temp\\zqvg0003.txt");
  EXPECT_FALSE(world.Exists("C:\\temp\\zqvg0003.txt"));
  ExpectInLog({"'C:\\temp\\zqvt0001.log' already exists\n"});
  Reload();
  world.properties["ZQVTEMP"] = "";  // the system's folder then
  EXPECT_EQ(TempName(false, "zqvt", ".log"), "C:\\temp\\zqvt0004.log");
  EXPECT_EQ(world.properties["ZQVTEMP"], "C:\\temp");
  Reload();
  world.properties = {{"ZQVTEMPFILENUM", "00aa"}};
  EXPECT_EQ(TempName(false, "zqvt", ".log"), "");
  EXPECT_EQ(TempName(true, "zqvg", ".txt"), "\\zqvg00aa.txt");
  world.properties["ZQVTEMPFILENUM"] = std::string(32, '1');
  EXPECT_EQ(TempName(true, "zqvg", ".txt"), "");
}

TEST_F(LogTest, TheLastTempNameIsTheNumber65534) {
  Fail("CreateFileA", ERROR_FILE_EXISTS);
  std::string name = "none yet";
  world.onCall = [&](std::string_view call) {
    if (call == "MsiProcessMessage" && name == "none yet") {
      name = TempName(false, "n", "");  // while a line is written all others are dropped, which saves most of the time
    }
  };
  LogLine("line");
  EXPECT_EQ(name, "");
  EXPECT_EQ(world.callCount["CreateFileA"], 65534);
}

TEST_F(LogTest, StartLogsFollowsItsSwitch) {
  const std::string traceLog = "C:\\new\\logs\\trace.log";
  for (const auto &[switches, published] :
       {std::pair<std::string, std::string>{"INSTALLTRACE=|INSTALLLOG=", "C:\\temp\\zqvt0001.log"},
        {"INSTALLTRACE=NONE|INSTALLLOG=none", ""},
        {"INSTALLTRACE=C:\\temp\\cut.log\n.no|INSTALLLOG=", "C:\\temp\\cut.log"},
        {"INSTALLTRACE= \"" + traceLog + "\" |INSTALLLOG=C:\\temp\\user.log", traceLog}}) {
    world.properties["ZQVUSERTRACEPATH"] = "";
    ExpectRun(iwiStartLogs, 0, switches);
    EXPECT_EQ(Values({"ZQVUSERTRACEPATH", "ZQVUSERLOGPATH"}), published + "||");
    EXPECT_FALSE(world.Exists("none"));
  }
  // The user log lives as long as the action that named it; the trace log begins after the old one is gone.
  const std::string stamp = "10:25:15 QVCA info iwiStartLogs: ",
                    user = stamp + "Property 'ZQVUSERLOGPATH' value set to ''\r\n" + stamp + "Returning with rc 0\r\n";
  EXPECT_EQ(Text("C:\\temp\\user.log"), user);
  EXPECT_TRUE(Text(traceLog).ends_with("Property 'ZQVUSERTRACEPATH' value set to '" + traceLog + "'\r\n" + stamp +
                                       "Property 'INSTALLLOG' value 'C:\\temp\\user.log' from property table\r\n" +
                                       user));
  ExpectRun(iwiStartLogs, 0, "INSTALLTRACE=C:\\temp\\*");  // no pattern
  EXPECT_TRUE(world.Exists("C:\\temp\\zqvt0001.log"));
  const std::string tooLong(260, 'x');
  ExpectRun(iwiStartLogs, 1603, "INSTALLTRACE=" + tooLong,
            {"***INSTALLTRACE value '" + tooLong + "' is longer than a path\n"});
}

TEST_F(LogTest, TheTemporaryLogIsMergedAndDeletedUnlessKept) {
  for (const bool keep : {false, true}) {
    world.WriteFile("C:\\temp\\zqvg0007.txt", "old");
    ExpectRun(iwiSetTempLogPath, 0, keep ? "ZQVTEMPFILENUM=0007|ZQVKEEPTEMPLOG=1" : "ZQVTEMPFILENUM=0007");
    EXPECT_EQ(Text("C:\\temp\\zqvg0007.txt").find("old"), std::string::npos);
    const std::string path = world.properties["ZQVTEMPLOGPATH"];
    world.WriteFile(path, "10:00:00 QVCA info x: early\rcut\r\n" + std::string(520, 'l') + "\n\nlast\r");
    ExpectRun(iwiUnSetTempLogPath, 0, "ZQVUSERTRACEPATH=" + path,  // folding a log into itself must end
              {"Messages from temporary log file '" + path + "':\n>>10:00:00 QVCA info x: early\n>>" +
               std::string(515, 'l') + "\n>>lllll\n>>\n>>last\n"});
    EXPECT_EQ(LogText().find(": Messages from", LogText().find(">>")), std::string::npos) << "more than there was";
    EXPECT_EQ(LogText().find("Deleted file: '" + path + "'\n") == std::string::npos, keep);
    world.properties["ZQVUSERTRACEPATH"] = "";
  }
}

TEST_F(LogTest, MergingWithoutAFileSaysSo) {
  MergeTempLog(true, "");
  world.properties["ZQVDATFOLDER"] = "C:\\data";
  MergeTempLog(true, "");
  const std::string file = "'C:\\data\\zqvilogn.txt'\n";
  EXPECT_EQ(Lines(),
            "Property 'ZQVDATFOLDER' not defined in property table\nNo log file available\n"
            "Property 'ZQVDATFOLDER' value 'C:\\data' from property table\n"
            "Can't find " +
                file + "Delete file not found: " + file);
}

}  // namespace
