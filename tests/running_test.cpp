#include "base/text.h"
#include "running/file_in_use.h"
#include "running/process_image.h"
#include "running/product_files.h"
#include "running/service.h"
#include "running/stop_plan.h"
#include "support.h"

namespace {

/// A machine with the product in C:\qv and its data in C:\data.
class RunningTest : public LibraryTest {
 protected:
  RunningTest() {
    Set("ZQVPGMFOLDER=C:\\qv\\|ZQVDATFOLDER=C:\\data|ZQVTEMPFILENUM=0007");
    for (const char *file : {"zqvxssvn.exe", "zqvsvc.exe", "zqvxcs2.dll", "zqvmperf.dll", "zqvzxma0.exe",
                             "runqvlsr.exe", "endqvm.exe", "endqvlsr.exe"}) {
      world.WriteFile(Bin(file), "MZ");
      world.programs[Bin(file)];
    }
    world.modules["C:\\temp\\zqvl0007.dll"].strings = {{1016, "Ending [1]: [2]"}, {1017, "Queue managers: [1]"},
                                                       {1018, "Pause"},           {1019, "Listeners: [1]"},
                                                       {1020, "Files: [1]"},      {1114, "Stopping"},
                                                       {1121, "Stopping %1"}};
  }

  static std::string Bin(const std::string &file) { return "C:\\qv\\bin\\" + file; }

  /// The next action runs deferred, in a load of its own, with the values that it needs.
  void Defer(const std::set<int> &modes = {MSIRUNMODE_SCHEDULED}) {
    Immediate();
    HandOver(world);
    world.modes = modes;
  }

  void Immediate() {
    Reload();
    world.modes.clear();
    world.messages.clear();
  }

  /// How many messages of a type there are, of those with this first field if one is given.
  int Count(int type, const char *first = nullptr) {
    return static_cast<int>(std::count_if(world.messages.begin(), world.messages.end(), [&](const Message &message) {
      return message.type == type && (first == nullptr || message.fields[1] == Cell(first));
    }));
  }

  int CountLines(const std::string &line) {
    const auto has = [&](const std::string &each) { return (each + '\n').find(line) != std::string::npos; };
    return static_cast<int>(std::count_if(world.installerLog.begin(), world.installerLog.end(), has));
  }

  void ExpectOnce(std::initializer_list<std::string> lines) {
    for (const std::string &line : lines) {
      EXPECT_EQ(CountLines(line), 1) << line << LogText();
    }
  }

  void StopDeferred() {
    Defer();
    EXPECT_EQ(iwiStopAllQv(kSession), 0u);
  }
};

TEST_F(RunningTest, AFileInUseIsOneThatCannotBeSharedAndIsNoLongerReadOnly) {
  const std::string file = Bin("zqvsvc.exe"), quoted = "'" + file + "'";
  DWORD &attributes = world.Attributes(file) = FILE_ATTRIBUTE_READONLY;
  EXPECT_FALSE(iwiIsFileInUse(file));
  EXPECT_EQ(attributes & FILE_ATTRIBUTE_READONLY, 0u);
  EXPECT_FALSE(iwiIsFileInUse(Bin("none.exe")));
  world.held.insert(file);
  EXPECT_TRUE(iwiIsFileInUse(file));
  Fail("GetFileAttributesA", 5);
  EXPECT_TRUE(iwiIsFileInUse(file));
  Fail("SetFileAttributesA", 5);
  attributes = FILE_ATTRIBUTE_READONLY;
  EXPECT_FALSE(iwiIsFileInUse(file));  // access is denied before sharing matters
  EXPECT_EQ(Lines(), quoted + " is not in use\n'C:\\qv\\bin\\none.exe' is not in use\n" + quoted + " is in use\n" +
                         "GetFileAttribues() failed 5 " + quoted + "\n" + quoted + " is in use\n" +
                         "SetFileAttribues() failed 5 " + quoted + "\n" + quoted + " is not in use\n");
}

TEST_F(RunningTest, WhatIsRunningIsPublished) {
  using Case = std::pair<NameSet, const char *>;
  for (const auto &[held, published] :
       {Case({}, "||"), Case({Bin("zqvxssvn.exe")}, "1||"), Case({Bin("zqvsvc.exe"), Bin("zqvmperf.dll")}, "1|1|"),
        Case({Bin("zqvxcs2.dll")}, "1||"), Case({Bin("zqvxcs2.dll"), Bin("zqvmperf.dll")}, "|1|")}) {
    Immediate();
    world.held = held;
    EXPECT_EQ(iwiIsQvRunning(kSession), 0u);
    EXPECT_EQ(Values({"ZQVQVISRUNNING", "ZQVPERFMONISRUNNING"}), published);
  }
  world.properties["ZQVPGMFOLDER"] = std::string(260, 'x');  // cannot be read: nothing runs, but the listeners may
  Immediate();
  EXPECT_EQ(iwiIsQvRunning(kSession), 0u);
  EXPECT_FALSE(iwiQueueManagersRunning());
  EXPECT_TRUE(iwiListenersRunning());
}

TEST_F(RunningTest, OnlyIniEndsAnInstallationWithoutTheFullInterface) {
  ExpectRun(iwiStopIfOnlyIni, 0, "UILevel=5|ONLYINI=1");
  ExpectRun(iwiStopIfOnlyIni, 0, "UILevel=2|ONLYINI=");
  ExpectRun(iwiStopIfOnlyIni, 1602, "UILevel=2|ONLYINI=1");
  ExpectRun(iwiStopIfOnlyIni, 1602, "UILevel=|ONLYINI=no");
}

TEST_F(RunningTest, AStopRequestGoesToActiveServicesAndItsFailuresHaveTheirLines) {
  world.services["KorvexQVSeries"].state = SERVICE_STOPPED;
  world.services["QVSeriesServices"].state = 3;  // stop pending
  EXPECT_EQ(iwiStartStopping(kSession), 0u);
  ExpectOnce({"Stopping service 'QVSeriesServices'\n", "Stopping service '"});
  Immediate();
  world.services["s"];
  iwiStopService(false, false, nullptr, "s");  // loads the message library
  Lines();
  world.services["s"] = {};
  const std::string stopping = "Stopping service 's'\n";
  for (const auto &[call, code, result, line] :
       {std::tuple("ControlService", 1060u, false, "***Service 's' does not exist\n"),
        {"ControlService", 1061u, false, "Service 's' already stopping\n"},
        {"ControlService", 1062u, false, "Service 's' not running\n"},
        {"ControlService", 1064u, false, "***Exception in service 's'\n"},
        {"ControlService", 1051u, false, "***Error 1051 stopping service 's'\n"},
        {"OpenServiceA", 5u, true, ""},
        {"OpenSCManagerA", 5u, false, "***Error 5 opening service 's'\n"}}) {
    Fail(call, code);
    EXPECT_EQ(iwiStopService(false, false, nullptr, "s"), result);
    EXPECT_EQ(Lines(), stopping + line) << code;
    EXPECT_EQ(iwiServiceExists("s"), *call == 'C');
    EXPECT_EQ(Lines(), *call == 'C' ? "Service 's' exists\n" : "Couldn't open service 's' 5\n");
  }
  world.failCall = {};
  EXPECT_FALSE(iwiServiceExists("t"));
  int ticks = 5;
  EXPECT_TRUE(iwiStopService(true, false, &ticks, "s"));
  EXPECT_EQ(Lines(), "Service 't' not found\nTicks count is now 1000005\n");
}

TEST_F(RunningTest, EveryProcessOfAnImageIsEnded) {
  world.MakePsapi("C:\\temp\\psapi.dll");
  for (DWORD id = 100; id < 5000; ++id) {
    world.processes[id] = "x";
  }
  for (const DWORD code : {5u, 87u}) {  // the first may not be opened, or has ended meanwhile
    Immediate();
    for (const auto &[id, path] :
         Properties("0=|4=C:\\qv\\bin\\other.exe|8=C:\\qv\\bin\\runqvlsr.exe|12=C:\\QV\\BIN\\RUNQVLSR.EXE|"
                    "16=C:\\x\\myrunqvlsr.exe|20=C:\\runqvlsr.exe\\x|24=runqvlsr.exe2|28=runqvlsr")) {
      world.processes[static_cast<DWORD>(std::stoi(id))] = path;
    }
    iwiTerminateProcessByImage("C:\\qv\\bin", "runqvlsr.exe");
    EXPECT_EQ(world.processes.size(), 4908u) << "nobody uses it";
    world.held.insert(Bin("runqvlsr.exe"));
    Fail("OpenProcess", code, 1);
    iwiTerminateProcessByImage("C:\\qv\\bin", "runqvlsr.exe");
    EXPECT_EQ(world.processes.size(), 4906u);
    ExpectOnce({"Found 4908 processes in system\n", "Process ID 8 terminated\n", "Process ID 12 terminated\n"});
    EXPECT_EQ(CountLines("***") + CountLines("process not found"), 0);
  }
  for (const char *call : {"EnumProcesses", "OpenProcess"}) {
    world.held.insert(Bin("runqvlsr.exe"));
    Fail(call, 8);
    iwiTerminateProcessByImage("C:\\qv\\bin", "runqvlsr.exe");
  }
  ExpectOnce({"'runqvlsr.exe': process not found\n"});  // only where all processes were seen
}

TEST_F(RunningTest, PsapiIsUnpackedWhereItIsMissing) {
  world.tables["Binary"].rows = {{"psapi.dll", Bytes{1, 2}}};
  std::string path;
  iwiLocatePsapi(&path);
  EXPECT_EQ(path, "C:\\temp\\psapi.dll");
  EXPECT_EQ(Values({"ZQVPSAPI"}), path + "|");
  EXPECT_EQ(world.ReadFile(path), "\x01\x02");
  world.properties["ZQVPREVPGM"] = "C:\\old";
  world.WriteFile("C:\\old\\uninst\\psapi.dll", "MZ");
  iwiLocatePsapi(&path);
  EXPECT_EQ(path, "C:\\old\\uninst\\psapi.dll");
  Immediate();
  world.properties["ZQVTEMP"] = "C:\\";  // tidied to "C:", and absolute
  world.properties["ZQVPREVPGM"] = "";
  iwiLocatePsapi(&path);
  EXPECT_EQ(path, "C:\\psapi.dll");
}

TEST_F(RunningTest, NothingIsLoadedOrRunFromAFolderThatIsNotAbsolute) {
  // Where such folders would lead.
  for (const char *file : {"psapi.dll", "uninst\\psapi.dll", "qv\\psapi.dll", "qv\\uninst\\psapi.dll",
                           "bin\\zqvsvc.exe", "bin\\endqvm.exe", "bin\\endqvlsr.exe"}) {
    world.MakePsapi(Format("C:\\%s", file));
    world.MakePsapi(Format("\\%s", file));
    world.programs[Format("\\%s", file)];
  }
  world.tables["Binary"].rows = {{"psapi.dll", Bytes{1, 2}}};
  world.held.insert(Bin("runqvlsr.exe"));
  const std::string folders[] = {"", "\\", "qv", "\\qv", "\\\\server", std::string(260, 'x')};
  for (const std::string &folder : folders) {
    Immediate();
    world.properties["ZQVPREVPGM"] = world.properties["ZQVTEMP"] = folder;
    world.callCount.clear();
    iwiTerminateProcessByImage("C:\\qv\\bin", "runqvlsr.exe");
    ExpectOnce({"***Can't load ''.\n"});
    EXPECT_EQ(world.callCount["LoadLibraryExA"] + CountLines("Unpacking binary"), 0) << folder;
  }
  Set("ZQVTEMP=C:\\|ZQVPGMFOLDER=");
  world.WriteFile("C:\\data\\zqvqmgrs.txt", "QM");
  Immediate();
  iwiStartQvService();
  EXPECT_EQ(iwiStopAllQv(kSession), 0u);
  ExpectOnce({"***Can't find '\\bin\\zqvsvc.exe'\n", "Unable to launch '\\bin\\endqvm.exe'\n", "Not found endqvlsr\n"});
  StopDeferred();
  EXPECT_TRUE(world.launched.empty());
}

TEST_F(RunningTest, TheDeferredPassWalksThePlanOfTheImmediateOne) {
  const std::pair<unsigned, const char *> services[] = {{1, "KorvexQVSeries"}, {2, "QVSeriesServices"}};
  // What a pass finds: the first service, the second, and none or three queue managers.
  const auto meet = [&](unsigned found) {
    world.launched.clear();
    for (const auto &[bit, service] : services) {
      world.services[service] = {(found & bit) != 0 ? 4u : 1u, kForever};  // running or stopped
    }
    world.WriteFile("C:\\data\\zqvqmgrs.txt", (found & 4) != 0 ? " one \r\n; comment\n\n\"no\"\ntwo\nthree" : "");
  };
  for (unsigned before = 0; before < 8; ++before) {
    for (unsigned after = 0; after < 8; ++after) {
      SCOPED_TRACE(Format("%u %u", before, after));
      Immediate();
      meet(before);
      EXPECT_EQ(iwiStopAllQv(kSession), 0u);
      const unsigned planned = (before & 1) + (before >> 1 & 1), managers = (before & 4) != 0 ? 3 : 0;
      const int ticks = static_cast<int>(132 + 240 * planned + 110 * managers) * 100000;
      EXPECT_EQ(Count(0x0A000000), 1) << "nothing has been waited for yet";
      const auto isTotal = [&](const Message &message) { return message.fields == Row{{}, 3, ticks, 0, 0}; };
      EXPECT_TRUE(std::any_of(world.messages.begin(), world.messages.end(), isTotal));
      EXPECT_EQ(world.launched.size(), managers) << "the listeners' command belongs to the deferred pass";
      EXPECT_EQ(world.properties["ZQVSTOPPLAN"], Format("%u,%u,%u", before & 1, before >> 1 & 1, managers));
      Defer();
      meet(after);
      world.slept = 0;
      EXPECT_EQ(iwiStopAllQv(kSession), 0u);
      EXPECT_EQ(Ticks(2), ticks);
      EXPECT_EQ(Count(0x08000000), 3 + static_cast<int>(planned) + (managers != 0 ? 2 : 0));
      const unsigned awaited = before & after;  // one that has stopped, or that was not planned, takes no time
      EXPECT_EQ(world.slept, 6000u + 120000u * ((awaited & 1) + (awaited >> 1 & 1)));
      for (const auto &[bit, service] : services) {
        EXPECT_EQ(Count(0x09000000, service), (awaited & bit) != 0 ? 121 : 0);
      }
      EXPECT_EQ(world.launched.size(), (after & 4) != 0 ? 3u : 0u) << "the names are those of the list as it is";
    }
  }
}

TEST_F(RunningTest, WithoutAPlanTheDeferredPassPlansByWhatItFinds) {
  EXPECT_EQ(TextOf(ParseStopPlan("1,0,1000000").value()), "1,0,1000000");
  for (const char *text : {"", "1", "0,0", "0,0,0,0", "2,0,0", "0,2,0", "-1,0,0", "0,-1,0", "0,0,-1", "0,0,1000001",
                           " 0,0,0", "0,0,0 ", "0,+0,0", "-0,0,0", "00,0,0", "0,0,", "0;0;0", "0,0,4294967296"}) {
    EXPECT_FALSE(ParseStopPlan(text)) << text;
  }
  world.services["KorvexQVSeries"];
  for (const auto &[plan, line] : {std::pair("", "No plan of the stop; planning by what is found\n"),
                                   {"0,0", "***'0,0' is no plan of the stop; planning by what is found\n"}}) {
    world.properties["ZQVSTOPPLAN"] = plan;
    StopDeferred();
    EXPECT_EQ(Ticks(2), (240 + 132) * 100000) << plan;
    ExpectOnce({line});
  }
  world.properties["ZQVSTOPPLAN"] = std::string(260, '0');
  Defer();
  EXPECT_EQ(iwiStopAllQv(kSession), 1603u);
  Immediate();
  Fail("MsiSetPropertyA", 1627);
  EXPECT_EQ(iwiStopAllQv(kSession), 1603u);
  EXPECT_EQ(Count(0x0A000000), 1) << "the plan comes last";
}

TEST_F(RunningTest, ACommandThatCannotBeLaunchedIsNamedOnce) {
  iwiStartQvService();
  EXPECT_EQ(world.launched.at(0).file + world.launched[0].parameters, Bin("zqvsvc.exe") + "-START -SILENT");
  world.programs.clear();
  iwiStartQvService();
  world.Remove(Bin("zqvsvc.exe"));
  iwiStartQvService();
  world.WriteFile("C:\\data\\zqvqmgrs.txt", "QM");
  EXPECT_EQ(iwiStopAllQv(kSession), 0u);
  ExpectOnce({"***Unable to launch 'C:\\qv\\bin\\zqvsvc.exe'\n", "***Can't find 'C:\\qv\\bin\\zqvsvc.exe'\n",
              "Unable to launch 'C:\\qv\\bin\\endqvm.exe'\n"});
  StopDeferred();
  ExpectOnce({"***Unable to launch process; code 2.\n"});
  EXPECT_EQ(CountLines("Unable to launch '"), 0);
  world.Remove(Bin("endqvlsr.exe"));
  StopDeferred();
  ExpectOnce({"Not found endqvlsr\n"});
  EXPECT_EQ(CountLines("Launching"), 0);
}

TEST_F(RunningTest, AWholeStopInItsOrder) {
  world.services["KorvexQVSeries"];
  world.services["QVSeriesServices"].stopsAt = world.clockMs + 1000;
  world.WriteFile("C:\\data\\zqvqmgrs.txt", "QM\n");
  const auto isStart = [](const Message &message) { return message.type == INSTALLMESSAGE_ACTIONSTART; };
  world.onCall = [&](std::string_view) {  // the first service ends as soon as it is waited for
    if (std::any_of(world.messages.begin(), world.messages.end(), isStart)) {
      world.services["KorvexQVSeries"].stopsAt = 0;
    }
  };
  StopDeferred();
  // The messages, "+N" for N steps of the bar, and with their second the lines that tell the order.
  std::string sequence;
  int steps = 0;
  for (const auto &[type, fields] : world.messages) {
    std::string text;
    if (type == INSTALLMESSAGE_INFO) {
      const std::string line = std::get<std::string>(fields[1]).substr(6);  // behind hours and minutes
      const std::string what = line.substr(line.find(": ") + 2);
      const auto has = [&](const char *part) { return what.find(part) != std::string::npos; };
      text = has("Waited ") || has("File '") || has("endqvlsr") || has("Process") ? line.substr(0, 2) + " " + what : "";
    } else if (fields != Row{{}, 2, 100000, 0}) {
      for (auto field = fields.begin() + 1; field != fields.end(); ++field) {
        const std::string *shown = std::get_if<std::string>(&*field);
        text += "/" + (*field == Cell{} ? "" : shown != nullptr ? *shown : std::to_string(std::get<int>(*field)));
      }
    } else {
      ++steps;
    }
    if (!text.empty()) {
      sequence += (steps == 0 ? "" : "+" + std::to_string(steps) + " ") + text + "\n";
      steps = 0;
    }
  }
  const std::string start = "/iwiStopAllQv/Stopping/", pause = start + "Pause\n/3/\n+1 /2/\n+2 /1/\n+2 /0/\n+1 ",
                    free = ".exe' is not locked\n", bin = "C:\\qv\\bin\\";
  EXPECT_EQ(sequence,
            "/1/1/0\n" + start + "Ending [1]: [2]\n/KorvexQVSeries/120\n+240 15 Waited 0 seconds\n" + start +
                "Ending [1]: [2]\n/QVSeriesServices/120\n+1 /QVSeriesServices/119\n" + "+239 16 Waited 1 seconds\n" +
                pause + start + "Queue managers: [1]\n/45/\n+90 19 Waited 0 seconds\n19 Found endqvlsr\n" +
                "19 Launching process '" + bin + "endqvlsr.exe' '-m QM'; dir '" + bin.substr(0, 9) + "'.\n" + start +
                "Listeners: [1]\n/10/\n+20 19 Waited 0 seconds\n19 File '" + bin + "runqvlsr" + free + "19 File '" +
                bin + "zqvmtbrn" + free + "19 File '" + bin + "zqvmsrvn" + free + pause + "22 File '" + bin +
                "zqvxssvn" + free + start + "Files: [1]\n/60/\n+120 22 Waited 0 seconds\n");
}

TEST_F(RunningTest, AServiceIsActiveInEveryStateButStopped) {
  for (DWORD state = 0; state <= 8; ++state) {
    world.services["s"].state = state;
    EXPECT_EQ(iwiIsServiceActive("s"), state >= SERVICE_START_PENDING && state <= SERVICE_PAUSED) << state;
  }
}

TEST_F(RunningTest, ARollbackIsPassedOverByTheStopAndUndoesTheRenaming) {
  Defer({MSIRUNMODE_ROLLBACK});
  EXPECT_EQ(iwiStopAllQv(kSession), 0u);
  EXPECT_EQ(TakeLog("iwiStopAllQv"), "CA bypassed; run mode must not be 'MSIRUNMODE_ROLLBACK'.\nReturning with rc 0\n");
  world.services["KorvexQVSeries"].displayName = "before";
  using Case = std::tuple<std::set<int>, UINT, const char *>;
  for (const auto &[modes, result, name] :
       {Case({}, 0, "before"), Case({16}, 0, "Korvex QVSeries Deleted"), Case({17, 16}, 0, "Korvex QVSeries"),
        Case({18}, 1603, "Korvex QVSeries")}) {
    Defer(modes);
    EXPECT_EQ(iwiRenameQvService(kSession), result);
    EXPECT_EQ(world.services["KorvexQVSeries"].displayName, name);
  }
  Defer();
  Fail("ChangeServiceConfigA", 5);
  EXPECT_EQ(iwiRenameQvService(kSession), 0u);
  ExpectOnce({": Error 5 from ChangeServiceConfig()'\n"});
}

TEST_F(RunningTest, ARestartIsPublished) {
  using Case = std::tuple<std::set<int>, const char *, const char *>;
  for (const auto &[modes, replaced, boot] :
       {Case({}, "", "|"), Case({}, "1", "1|"), Case({MSIRUNMODE_REBOOTATEND}, "", "1|")}) {
    world.modes = modes;
    ExpectRun(iwiSetZqvBoot, 0, {{"ReplacedInUseFiles", replaced}});
    EXPECT_EQ(Values({"ZQVBOOT"}), boot);
    EXPECT_EQ(CountLines(": Reboot is scheduled\n"), modes.empty() ? 0 : 1);
  }
}

}  // namespace
