#include "session.h"

namespace {

/// One action a load, as under the engine.
UINT CallAlone(const char *action, MSIHANDLE session) {
  LoadedLibrary library;
  return library.Call(action, session);
}

TEST_F(SessionTest, LogsBeginAndTheTemporaryOneIsFoldedAway) {
  EXPECT_EQ(CallAlone("iwiStartLogs", session), 0u);
  const std::string trace = Get("ZQVUSERTRACEPATH");
  EXPECT_EQ(trace, folder + "\\zqvt0001.log");
  EXPECT_EQ(CallAlone("iwiSetTempLogPath", session), 0u);
  const std::string temporary = folder + "\\zqvg" + Get("ZQVTEMPFILENUM") + ".txt";
  EXPECT_EQ(Get("ZQVTEMPLOGPATH"), temporary);
  EXPECT_EQ(CallAlone("iwiPrintSummary", session), 0u);
  EXPECT_TRUE(Contains(ReadFile(temporary), "iwiPrintSummary: Returning with rc 0\r\n"));
  EXPECT_EQ(CallAlone("iwiUnSetTempLogPath", session), 0u);

  const std::string log = ReadFile(trace);
  EXPECT_TRUE(Contains(log, "iwiStartLogs: Property 'ZQVUSERTRACEPATH' value set to '" + trace + "'\r\n"));
  EXPECT_TRUE(Contains(log, "Messages from temporary log file '" + temporary + "':\r\n>>"));
  EXPECT_TRUE(Contains(log, "End of messages from temporary log file.\r\n"));
  EXPECT_TRUE(Contains(log, "Deleted file: '" + temporary + "'\r\n"));
  EXPECT_EQ(GetFileAttributesA(temporary.c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST_F(SessionTest, DeferredActionsAreGivenTheValueList) {
  Set("ZQVPROPERTYNAMELIST1", "ZQVTEMP;;ProductName");
  Set("ZQVPROPERTYNAMELIST2", "");
  Set("ZQVPROPERTYNAMELIST3", "HIGHCONTRAST;ZQVABSENT");
  Set("HIGHCONTRAST", "a=b");
  EXPECT_EQ(CallAlone("iwiWriteDeferredProperties", session), 0u);
  EXPECT_EQ(CallAlone("iwiSetCustomActionData", session), 0u);
  const std::string list = folder + "\\zqvp" + Get("ZQVTEMPFILENUM") + ".txt";
  EXPECT_EQ(ReadFile(list), "ZQVTEMP=" + folder + ";ProductName=Vantrel QV;HIGHCONTRAST=a=b;ZQVABSENT=;");

  MSIHANDLE database = MsiGetActiveDatabase(session);
  MSIHANDLE view = 0;
  MSIHANDLE row = 0;
  int deferred = 0;
  MsiDatabaseOpenViewA(database, "SELECT `Action`, `Type` FROM `CustomAction`", &view);
  MsiViewExecute(view, 0);
  while (MsiViewFetch(view, &row) == ERROR_SUCCESS) {
    char name[128];
    DWORD length = sizeof name;
    MsiRecordGetStringA(row, 1, name, &length);
    const int type = MsiRecordGetInteger(row, 2);
    const bool inScript = (type & 0x401) == 0x401;
    deferred += inScript ? 1 : 0;
    EXPECT_EQ(Get(name), inScript ? list : "") << name;
    MsiCloseHandle(row);
  }
  MsiCloseHandle(view);
  MsiCloseHandle(database);
  EXPECT_GE(deferred, 1);
}

TEST_F(SessionTest, AFailureIsTheInstallersAndItsMessageIsLogged) {
  const std::string trace = folder + "\\trace.log";
  Set("ZQVUSERTRACEPATH", trace);
  Set("ZQVTEMPFILENUM", "0001");
  ASSERT_TRUE(CopyFileA("catalogue\\zqvircan.dll", (folder + "\\zqvl0001.dll").c_str(), TRUE));
  EXPECT_EQ(CallAlone("test", session), 1603u);
  const std::string log = ReadFile(trace);
  EXPECT_TRUE(Contains(log, "QVCA Test CA MB error: ")) << log;
  EXPECT_TRUE(Contains(log, "Freeing NLS library")) << log;
  EXPECT_EQ(CallAlone("iwiUserExit", session), 1602u);
}

TEST_F(SessionTest, WithoutASessionEveryActionFailsCleanly) {
  for (const char *action : {"iwiStartLogs", "iwiSetTempLogPath", "iwiUnSetTempLogPath", "iwiPrintSummary",
                             "iwiWriteDeferredProperties", "iwiSetCustomActionData"}) {
    EXPECT_EQ(CallAlone(action, 0), 1603u) << action;
  }
}

TEST_F(SessionTest, ConsecutiveActionsOfOneLoadNest) {
  const std::string trace = folder + "\\trace.log";
  Set("ZQVUSERTRACEPATH", trace);
  LoadedLibrary library;
  EXPECT_EQ(library.Call("iwiPrintSummary", session), 0u);
  EXPECT_EQ(library.Call("iwiUserExit", session), 1602u);
  EXPECT_TRUE(Contains(ReadFile(trace), "Invalid depth count entering 'iwiUserExit' from 'iwiPrintSummary': 0\r\n"));
}

}  // namespace
