#include <stdexcept>

#include "runtime/frame.h"
#include "runtime/log.h"
#include "runtime/message.h"
#include "support.h"

namespace {

class FrameTest : public LibraryTest {
 protected:
  /// The message library under the name that the installation's number gives it.
  void PlaceMessageLibrary() {
    world.properties["ZQVTEMPFILENUM"] = "0007";
    world.modules["C:\\temp\\zqvl0007.dll"].strings = {{2027, "Caption"}, {2041, "It failed."}};
  }
};

TEST_F(FrameTest, OnlyTheFirstActionOfALoadHasABanner) {
  world.properties["ProductName"] = "Vantrel QV";
  world.modes = {MSIRUNMODE_ADMIN, MSIRUNMODE_LOGENABLED};
  EXPECT_EQ(iwiUserExit(kSession), 1602u);
  EXPECT_EQ(iwiPrintSummary(kSession + 1), 0u);  // is taken for nested: the first action's session stays in use
  EXPECT_EQ(iwiUserExit(kSession), 1602u);
  EXPECT_EQ(LogText(),
            "(CaProlog): zqviwicn.dll Built on Aug  1 2007 at 23:17:22\n"
            "(CaProlog): Property 'ProductName' value 'Vantrel QV' from property table\n"
            "(CaProlog): Property 'ZQVEXTCA60000' not defined in property table\n"
            "(CaProlog): User name is 'tester'\n"
            "(CaProlog): MSIRUNMODE_LOGENABLED\n"
            "(CaProlog): MSIRUNMODE_ADMIN\n"
            "iwiUserExit: Returning with rc 1602\n"
            "iwiUserExit: Invalid depth count entering 'iwiPrintSummary' from 'iwiUserExit': 0\n"
            "iwiPrintSummary: Property 'ZQVTEMP' value 'C:\\temp' from property table\n"
            "iwiPrintSummary: Returning with rc 0\n"
            "iwiUserExit: Returning with rc 1602\n");
}

TEST_F(FrameTest, AnUnreadableNameOrFolderSkipsTheNestingStep) {
  const std::string name = "(CaProlog): Property 'ProductName' not defined in property table\n";
  for (const auto &[property, before] :
       {std::pair<std::string, std::string>("ProductName", ""), {"ZQVEXTCA60000", name}}) {
    world.properties.clear();
    ExpectRun(iwiUserExit, 1602, property + "=" + std::string(260, 'p'));
    EXPECT_EQ(LogText(), "(CaProlog): zqviwicn.dll Built on Aug  1 2007 at 23:17:22\n" + before +
                             "(CaProlog): ***msiGetProperty('" + property +
                             "') failed (234)\n(CaProlog): Returning with rc 1602\n");
    world.properties[property] = "x";
    iwiUserExit(kSession);
    ExpectInLog({"(CaProlog): Invalid depth count entering 'iwiUserExit': -1\n"});
  }
}

TEST_F(FrameTest, EveryRunModeHasItsNameAndItsPlace) {
  const auto logged = [&](const std::set<int> &modes) {
    Reload();
    world.modes = modes;
    CaLogRunModes(kSession);
    return Lines();
  };
  const std::string user = "User name is 'tester'\n", mode = "MSIRUNMODE_";
  EXPECT_EQ(logged({16, 17, 18, 0}), user + mode + "SCHEDULED\n" + mode + "COMMIT\n" + mode + "ROLLBACK\n");
  EXPECT_EQ(logged({16, 17, 1}), user + mode + "SCHEDULED\n" + mode + "ROLLBACK\n");
  EXPECT_EQ(logged({18}), user + mode + "COMMIT\n");
  EXPECT_EQ(logged({7, 5, 3, 1}),
            user + mode + "REBOOTNOW\n" + mode + "OPERATIONS\n" + mode + "ROLLBACKENABLED\n" + mode + "ADVERTISE\n");
  EXPECT_EQ(logged({6, 4, 2, 0}),
            user + mode + "REBOOTATEND\n" + mode + "LOGENABLED\n" + mode + "MAINTENANCE\n" + mode + "ADMIN\n");
  Fail("GetUserNameA", 5);
  EXPECT_EQ(logged({}), "Can't get user name 5\n");
}

TEST_F(FrameTest, AnActionCalledWithinAnActionIsAPartOfIt) {
  PlaceMessageLibrary();
  iiiDisplayMsgBox("before any action", 16);
  world.installerLog.clear();
  const auto body = []() -> UINT {
    EXPECT_EQ(test(kSession + 1), 1603u);
    LogLine("after");
    return 1603;
  };
  EXPECT_EQ(RunAction({"outer", 0, kAnyMode, body}, kSession), 1603u);
  EXPECT_TRUE(LogText().ends_with(
      "Test CA: Returning with rc 1603\nouter: after\nouter: Property 'ZQVTEMP' value 'C:\\temp' from property table\n"
      "outer: Property 'ZQVTEMPFILENUM' value '0007' from property table\nouter: Splash bitmap not running\n"
      "outer: QVCA outer MB error: It failed.\nQVCA outer MB error: It failed.\n"
      "outer: Property 'UILevel' value '2' from property table\nouter: Freeing NLS library\n"
      "outer: Returning with rc 1603\n"))
      << LogText();
  world.modes = {MSIRUNMODE_SCHEDULED};  // each action asks for its modes
  EXPECT_EQ(iwiPrintSummary(kSession), 1603u);
}

TEST_F(FrameTest, GuardTestsItsModesInOrderAndTakesItsForm) {
  const auto guarded = [](RunModeGuard guard) { return RunAction({"a", 7, guard, [] { return 99u; }}, kSession); };
  world.modes = {MSIRUNMODE_SCHEDULED, MSIRUNMODE_COMMIT};
  EXPECT_EQ(guarded({RunModeGuard::bypass, {{kCommit, kScheduled}}}), 7u);
  ExpectInLog({"CA bypassed; run mode must not be 'MSIRUNMODE_COMMIT'.\n"});
  Reload();
  EXPECT_EQ(guarded({RunModeGuard::error, {{kScheduled, kCommit}}}), 1603u);
  ExpectInLog({"***CA execute error; run mode must not be 'MSIRUNMODE_SCHEDULED'.\n"});
  Reload();
  world.modes = {MSIRUNMODE_ROLLBACK};
  EXPECT_EQ(guarded({RunModeGuard::error, {{kScheduled, kCommit}}}), 99u);
  for (const auto action : {iwiStartLogs, iwiSetTempLogPath, iwiPrintSummary}) {
    for (const int mode : {16, 17, 18}) {
      world.modes = {mode};
      ExpectRun(action, 1603);
    }
  }
}

TEST_F(FrameTest, AFailureWithoutAMessageOfItsOwnShowsTheGeneralOne) {
  PlaceMessageLibrary();
  ExpectRun(test, 1603, {}, {"Test CA: QVCA Test CA MB error: It failed.\n", "Test CA: Freeing NLS library\n"});
  EXPECT_TRUE(world.boxes.empty());  // silent
  for (const auto &[code, language] : {std::pair{"French", 1036}, {"z", 2052}, {"j", 17}, {"", 1024}}) {
    ExpectRun(test, 1603, std::string("UILevel=5|ZQVLANGUAGECODE=") + code);
    EXPECT_EQ(world.boxes.back().language, language) << code;
  }
  EXPECT_EQ(world.boxes[0].text + world.boxes[0].caption, "It failed.Caption");
  EXPECT_EQ(world.boxes[0].type, 16u);
  // No text: no box. And in a folder that is not absolute nobody looks whether there is one.
  world.modules.clear();
  world.modules["temp\\zqvl0007.dll"].strings = {{2041, "Another's."}};
  for (const std::string folder : {"C:\\temp", "temp"}) {
    ExpectRun(test, 1603, "ZQVTEMP=" + folder,
              {"***iwiLoadNlsString LoadLibrary(" + folder + "\\zqvl0007.dll) failed 126 (ID '2041'). (ZQV4700)\n"});
  }
  EXPECT_EQ(world.boxes.size(), 4u);
}

TEST_F(FrameTest, NothingThrownLeavesAnAction) {
  const auto body = []() -> UINT { throw std::runtime_error("no such luck"); };
  EXPECT_EQ(RunAction({"thrower", 0, kAnyMode, body}, kSession), 1603u);
  EXPECT_EQ(RunAction({"other", 0, kAnyMode, []() -> UINT { throw 7; }}, kSession), 1603u);
  ExpectInLog({"thrower: ***Action 'thrower' ended by an exception: no such luck\n",
               "other: ***Action 'other' ended by an exception: of an unknown kind\n",
               "other: Returning with rc 1603\n"});
}

TEST_F(FrameTest, PauseWaitsInABoxAndCancelledCopyingTurnsSuccessIntoUserExit) {
  ExpectRun(iwiPause, 0);
  EXPECT_EQ(world.boxes.at(0).text + world.boxes[0].caption, "PauseDebug");
  copyCancelled = TRUE;
  ExpectRun(iwiPause, 1602);
  ExpectRun(test, 1603);
}

UINT __stdcall FailExternally(MSIHANDLE session) { return session == kSession ? 1603 : 1; }

class ExternalCopyTest : public FrameTest {
 protected:
  /// Runs an action with ZQVEXTCA60000 set; the lines between the property reads and the action's own.
  std::string RunWith(const std::string &folder, UINT expected) {
    ExpectRun(iwiUserExit, expected, "ZQVEXTCA60000=" + folder);
    EXPECT_EQ(world.OpenHandles(), 0) << "neither the mutex nor the copy outlives the action";
    std::string lines = TakeLog("(CaProlog)");
    lines.erase(0, lines.find("from property table\n") + sizeof "from property table");
    return lines;
  }
};

TEST_F(ExternalCopyTest, CarriesTheActionOut) {
  world.modules["C:\\copy\\zqviwicn.dll"].procs["iwiUserExit"] =
      reinterpret_cast<FARPROC>(reinterpret_cast<void *>(FailExternally));
  for (const char *folder : {"C:\\copy", "C:\\copy\\"}) {
    PlaceMessageLibrary();
    world.properties["UILevel"] = "5";
    EXPECT_EQ(RunWith(folder, 1603),
              "User name is 'tester'\nExecuting 'C:\\copy\\zqviwicn.dll(iwiUserExit)'\nReturning with rc 1603\n");
    EXPECT_TRUE(world.boxes.empty());
  }
}

TEST_F(ExternalCopyTest, WhatHindersItIsLoggedAndTheActionRunsHere) {
  const std::string user = "User name is 'tester'\n", old = "C:\\old";
  world.modules["copy\\zqviwicn.dll"];
  world.modules["C:\\old\\zqviwicn.dll"];
  for (const auto &[folder, call, code, lines] :
       {std::tuple<std::string, const char *, DWORD, std::string>{"C:\\none", "", 0,
                                                                  user + "Can't find 'C:\\none\\zqviwicn.dll'\n"},
        {"copy", "", 0, user + "Can't find 'copy\\zqviwicn.dll'\n"},
        {old, "", 0, user + "Can't find proc 'C:\\old\\zqviwicn.dll(iwiUserExit)'\n"},
        {old, "GetProcAddress", 5, user + "***Unable to get proc 'C:\\old\\zqviwicn.dll(iwiUserExit)'; code 5.\n"},
        {old, "LoadLibraryExA", 193, user + "LoadLibraryEx(C:\\old\\zqviwicn.dll) failed 193.\n"},
        {old, "CreateMutexA", 5, "Can't create mutex 5\n"}}) {
    Fail(call, code);
    EXPECT_EQ(RunWith(folder, 1602), lines);
  }
  world.failCall = {};
  world.mutexes.insert("ZQV_QVSeriesInstallation");
  EXPECT_EQ(RunWith(old, 1602), "External invocation of 'zqviwicn.dll'\n");
}

}  // namespace
