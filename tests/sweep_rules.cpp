#include <fnmatch.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "base/text.h"
#include "sweep.h"

namespace {

using Strings = std::vector<std::string>;

Strings Split(std::string_view text, std::string_view mark) {
  Strings parts;
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t end = std::min(text.find(mark, at), text.size());
    parts.emplace_back(text.substr(at, end - at));
    at = end + mark.size();
  }
  return parts;
}

/// The rows of a table in sweep_rules.txt.
std::vector<Strings> Rows(const std::string &table) {
  std::vector<Strings> rows;
  std::ifstream file(ZQV_SWEEP_RULES);
  std::string section;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with('[')) {
      section = line;
    } else if (section == "[" + table + "]" && !line.empty() && line[0] != '#') {
      rows.push_back(Split(line, " : "));
    }
  }
  return rows;
}

std::set<std::string> used;  // the rows that have been needed, as the file has them

/// Whether a row meets the test; the first that does is needed.
template <typename Test>
bool AnyMeets(const std::vector<Strings> &rows, Test test) {
  const auto row = std::find_if(rows.begin(), rows.end(), test);
  if (row == rows.end()) {
    return false;
  }
  std::string text;
  for (const std::string &column : *row) {
    text += (text.empty() ? "" : " : ") + column;
  }
  used.insert(text);
  return true;
}

/// Whether the row's first two columns are about the run.
bool IsAbout(const Strings &row, const FaultRun &run) {
  const Strings scenarios = Split(row[0], " "), calls = Split(row[1], " ");
  const auto fits = [&](const std::string &name) { return name == "*" || run.scenario.starts_with(name); };
  return std::count(calls.begin(), calls.end(), run.call) != 0 && std::any_of(scenarios.begin(), scenarios.end(), fits);
}

/// The rows of calls, one for each of the things that they are about, with the mark of those behind a fault in front.
const Strings &Calls() {
  static const Strings all = [] {
    Strings calls;
    for (const Strings &row : Rows("calls")) {
      for (const std::string &subject : Split(row[1], " | ")) {
        const bool marked = subject.starts_with('+');
        calls.push_back((marked ? "+" : "") + row[0] + " : " + subject.substr(marked ? 1 : 0));
      }
    }
    return calls;
  }();
  return all;
}

/// As the table shows it, with numbers above 2048 hexadecimal.
std::string Shown(const Asked &asked) {
  std::string text = asked.call;
  for (const DWORD value : asked.values) {
    text += zqv::Format(value > 2048 ? " 0x%X" : " %u", value);
  }
  return text + " : " + asked.subject;
}

bool Fits(const std::string &call, const std::string &shown) {
  return fnmatch(call.c_str() + (call[0] == '+' ? 1 : 0), shown.c_str(), FNM_NOESCAPE) == 0;
}

}  // namespace

bool MayEndWith(const FaultRun &run, UINT result) {
  static const std::vector<Strings> rows = Rows("results");
  return result == run.usual || result == ERROR_INSTALL_FAILURE || AnyMeets(rows, [&](const Strings &row) {
           return IsAbout(row, run) && std::to_string(result) == (row[2] == "code" ? std::to_string(run.code) : row[2]);
         });
}

bool MaySucceed(const FaultRun &run, std::size_t line) {
  static const std::vector<Strings> rows = Rows("undecided");
  const auto has = [&](std::size_t at, std::string_view text) { return run.log[at].find(text) != std::string::npos; };
  return AnyMeets(rows, [&](const Strings &row) {
    if (!IsAbout(row, run)) {
      return false;
    }
    bool isPlace = row.size() < 4 || row[3][0] == '-';
    for (std::size_t at = 0; row.size() >= 4 && at < line; ++at) {
      isPlace = has(at, row[3].substr(2)) ? row[3][0] == '+' : isPlace;
    }
    const Strings texts = Split(row[2], " | ");
    return isPlace && std::any_of(texts.begin(), texts.end(), [&](const std::string &text) { return has(line, text); });
  });
}

bool MayBeSilent(const FaultRun &run) {
  static const std::vector<Strings> rows = Rows("silent");
  return AnyMeets(rows, [&](const Strings &row) { return IsAbout(row, run); });
}

void WriteUsedRules() {
  const char *const path = std::getenv("ZQV_SWEEP_USED");
  std::ofstream file(path != nullptr ? path : "");
  for (const std::string &row : used) {
    file << row << '\n';
  }
}

std::string Unexpected(const Asked &asked) {
  const std::string shown = Shown(asked);
  const auto fits = [&](const std::string &call) { return Fits(call, shown); };
  return std::any_of(Calls().begin(), Calls().end(), fits) ? "" : shown;
}

std::string Missing(const std::set<Asked> &all) {
  std::string missing;
  for (const std::string &call : Calls()) {
    const bool met = std::any_of(all.begin(), all.end(), [&](const Asked &asked) { return Fits(call, Shown(asked)); });
    missing += met || call[0] == '+' ? "" : call + "\n";
  }
  return missing;
}
