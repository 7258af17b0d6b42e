#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "fake/world.h"
#include "runtime/copy_cancel.h"
#include "runtime/session.h"
#include "zqviwicn/entry_points.h"
#include "zqviwicn/load.h"

using namespace zqv;

using EntryPoint = UINT (*)(MSIHANDLE);

/// Properties by name; also written "NAME=value|NAME=value".
struct Properties : std::map<std::string, std::string> {
  using map::map;
  Properties(const std::string &text) {
    for (std::size_t at = 0, end = 0; at < text.size(); at = end + 1) {
      end = std::min(text.find('|', at), text.size());
      const std::size_t sign = text.find('=', at);
      emplace(text.substr(at, sign - at), text.substr(sign + 1, end - sign - 1));
    }
  }
  Properties(const char *text) : Properties(std::string(text)) {}
};

/// Hands all properties to the actions that run deferred, in a value list.
inline void HandOver(World &world) {
  std::string values;
  for (const auto &[name, value] : world.properties) {
    values += name + "=" + value + ";";
  }
  world.properties["CustomActionData"] = "C:\\temp\\zqvp0001.txt";
  world.WriteFile("C:\\temp\\zqvp0001.txt", values);
}

/// A fresh world with the library loaded into it, as the engine's first action finds both. When the test ends the
/// library is unloaded and must have left no handle open.
class LibraryTest : public testing::Test {
 protected:
  LibraryTest() : world(ResetWorld()) {
    copyCancelled = FALSE;
    world.properties = {{"TempFolder", "C:\\temp\\"}, {"ZQVTEMP", "C:\\temp"}, {"UILevel", "2"}};
    world.MakeFolder("C:\\temp");
    LoadInSession();
  }
  ~LibraryTest() override {
    Unload();
    EXPECT_EQ(world.OpenHandles(), 0);
    EXPECT_TRUE(world.badCloses.empty());
  }

  /// Unloads the library and loads it again, as the engine does between two actions; forgets all lines.
  void Reload() {
    Unload();
    LoadInSession();
    world.installerLog.clear();
  }

  /// Loads the library and lets its operations be called without an action around them.
  static void LoadInSession() {
    Load();
    Session().handle = kSession;
  }

  void Set(const Properties &given) {
    for (const auto &[name, value] : given) {
      world.properties[name] = value;
    }
  }

  /// The properties' values, with a bar behind each.
  std::string Values(std::initializer_list<const char *> names) {
    std::string values;
    for (const char *name : names) {
      values += (world.properties.count(name) != 0 ? world.properties[name] : "") + "|";
    }
    return values;
  }

  /// In a load of its own, with these properties too, the action ends with this result and logs these texts.
  void ExpectRun(EntryPoint action, UINT result, const Properties &given = {},
                 std::initializer_list<std::string> texts = {}) {
    Reload();
    Set(given);
    EXPECT_EQ(action(kSession), result) << LogText();
    ExpectInLog(texts);
  }

  /// Runs an action after a reload; gives its lines.
  std::string Run(EntryPoint action, UINT expected = 0) {
    Reload();
    copyCancelled = FALSE;
    EXPECT_EQ(action(kSession), expected);
    return LogText();
  }

  /// The same in a deferred mode, with the value list of now.
  std::string RunIn(int mode, EntryPoint action, UINT expected = 0) {
    HandOver(world);
    world.modes = {mode};
    const std::string log = Run(action, expected);
    world.modes = {};
    return log;
  }

  /// What a file holds; "none" when there is no such file.
  std::string Text(const std::string &path) { return world.ReadFile(path).value_or("none"); }

  /// All lines so far, stamps removed: each is "ACTION: text".
  std::string LogText() {
    std::string text;
    for (const std::string &line : world.installerLog) {
      constexpr std::string_view stamp = "10:25:15 QVCA info ";
      text += (line.starts_with(stamp) ? line.substr(stamp.size()) : line) + '\n';
    }
    return text;
  }

  /// The same of one action, without its name; forgets all lines.
  std::string TakeLog(const std::string &action) {
    std::string text;
    for (const std::string &line : std::exchange(world.installerLog, {})) {
      const std::size_t at = line.find(action + ": ");
      text += at == std::string::npos ? "" : line.substr(at + action.size() + 2) + '\n';
    }
    return text;
  }

  /// The same of operations that no action runs.
  std::string Lines() { return TakeLog("(CaProlog)"); }

  void ExpectInLog(std::initializer_list<std::string> texts) {
    for (const std::string &text : texts) {
      EXPECT_NE(LogText().find(text), std::string::npos) << text << "in\n" << LogText();
    }
  }

  /// From now on the nth call of that name fails; or each (0).
  void Fail(const char *call, DWORD code, int nth = 0) {
    world.callCount.clear();
    world.failCall = {call, nth, code};
  }

  /// What the RemoveFile table's rows would remove, with component and mode, a line each; forgets them.
  std::string Stacked() {
    std::string text;
    for (const Row &row : std::exchange(world.tables["RemoveFile"].rows, {})) {
      const std::string *name = std::get_if<std::string>(&row[2]);
      text += std::get<std::string>(row[1]) + " " + world.properties[std::get<std::string>(row[3])] +
              (name != nullptr ? *name : "") + " " + std::to_string(std::get<int>(row[4])) + "\n";
    }
    return text;
  }

  /// The ticks of the progress messages of a kind: 2 those that are sent, 3 those that are announced.
  int Ticks(int kind) {
    int ticks = 0;
    for (const Message &message : world.messages) {
      if (message.type == static_cast<int>(INSTALLMESSAGE_PROGRESS) && std::get<int>(message.fields[1]) == kind) {
        ticks += std::get<int>(message.fields[2]);
      }
    }
    return ticks;
  }

  World &world;
};
