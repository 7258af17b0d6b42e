#include "bare.h"
#include "measure.h"
#include "platform/win32.h"
#include "runtime/log.h"
#include "runtime/property.h"
#include "runtime/session.h"
#include "services/tables/table_row.h"
#include "zqviwicn/load.h"

/// Log lines and table rows, each of which is several calls of the installer.
namespace {

using namespace zqv;

constexpr int kRounds = 15;
constexpr int kLines = 200;
const std::string kText = "Property 'ZQVPRODUCT' value 'server' from property table";
const std::string kLine = "12:00:00 QVCA info iwiUserExit: " + kText;

double Repeat(const std::function<void()> &work) {
  return Time([&] {
    for (int line = 0; line < kLines; ++line) {
      work();
    }
  });
}

}  // namespace

void BenchLines() {
  const InstallerSession session;
  Unload();  // the third log is not retired yet
  Load();
  Session().handle = session.Get();
  const std::string temp = base + "\\temp.log";
  MsiSetPropertyA(session.Get(), "ZQVTEMPLOGPATH", temp.c_str());
  const auto append = [&] { BareAppend({trace, UserLog(), temp}, kLine); };
  const auto appendAndTell = [&] {
    BareMessage(session.Get(), kLine);
    append();
  };
  Compare(kRounds, kLines, [&] { return Repeat([] { LogLine(kText); }); },
          {{"log line, three files: open, append, close", [&] { return Repeat(append); }},
           {"log line, three files: the same and the installer's log", [&] { return Repeat(appendAndTell); }}});
  DeleteFileA(temp.c_str());
}

void BenchReads(int entries) {
  const InstallerSession session;
  const std::string list = base + "\\values.txt";
  {
    const OwnedStream file(std::fopen(list.c_str(), "wt"));
    for (int entry = 0; entry < entries; ++entry) {
      std::fprintf(file.Get(), "ZQVPROPERTY%d=value;", entry);
    }
  }
  MsiSetPropertyA(session.Get(), "CustomActionData", list.c_str());
  int next = 0;
  const auto name = [&] { return "ZQVPROPERTY" + std::to_string(next = (next + 7919) % entries); };
  std::string value;
  if (!CadGetProperty(name().c_str(), value) || value != "value") {
    Fail("the value list cannot be read");
  }
  const auto read = [&] { static_cast<void>(CadGetProperty(name().c_str(), value)); };
  const auto line = [&] { BareLine(session.Get(), kLine + name()); };
  Compare(kRounds, kLines, [&] { return Repeat(read); },
          {{"property read, " + std::to_string(entries) + " entries: its log line", [&] { return Repeat(line); }}});
  DeleteFileA(list.c_str());
}

void BenchRows(int rows) {
  constexpr int kBlock = 250;
  const InstallerSession session;
  int next = 0;
  const auto add = [&](const std::function<void(const char *)> &addRow) {
    return Time([&] {
      for (int row = 0; row < kBlock; ++row) {
        addRow(("ZQV_Record_" + std::to_string(next++)).c_str());
      }
    });
  };
  const auto addByLibrary = [](const char *key) {
    const FieldValue values[] = {key, "Base", "file.txt", "ZQVPATHPROPERTY0", 3};
    if (iwiAddTableRow({"RemoveFile", values}) != ERROR_SUCCESS) {
      Fail("a row cannot be added");
    }
  };
  addByLibrary("ZQV_Record");
  const int lines = CountLines();
  const auto addBare = [&](const char *key) {
    BareInsert(session.Get(), "SELECT * FROM RemoveFile", {key, "Base", "file.txt", "ZQVPATHPROPERTY0"}, 3);
  };
  const auto addWithLines = [&](const char *key) {
    addBare(key);
    for (int line = 0; line < lines; ++line) {
      BareLine(session.Get(), kLine);
    }
  };
  const std::string name = std::to_string(rows) + " rows: bare inserts";
  Compare(rows / kBlock, kBlock, [&] { return add(addByLibrary); },
          {{name + ", same lines", [&] { return add(addWithLines); }}, {name, [&] { return add(addBare); }}});
}
