#include "running/queue_managers.h"

#include <set>

#include "base/code_page.h"
#include "base/folder_rule.h"
#include "base/read_line.h"
#include "base/text.h"
#include "platform/c_file.h"
#include "platform/owner.h"
#include "runtime/log.h"

namespace zqv {

namespace {

/// Takes a name of the list over, unless it cannot be one. `taken` holds those that are there already.
void Take(std::string_view name, std::set<std::basic_string<WCHAR>> &taken, std::vector<std::string> &names) {
  const std::string text(name);
  if (!IsFileName(name)) {
    Log("***Queue manager name '%s' is not valid", text.c_str());
  } else if (taken.insert(NameKey(name)).second) {
    names.push_back(text);
    Log("Queue manager '%s'", text.c_str());
  }
}

}  // namespace

std::vector<std::string> ListQueueManagers(const std::string &dataFolder) {
  const std::string path = Format("%s\\%s", dataFolder.c_str(), kQueueManagerList);
  std::vector<std::string> names;
  std::set<std::basic_string<WCHAR>> taken;
  const OwnedStream file(OpenCFile(path.c_str(), "rt"));
  if (!file) {
    Log("No queue manager list '%s'", path.c_str());
    return names;
  }
  std::string line;
  while (ReadLine(file.Get(), line) > 0) {
    const std::string_view name = StripSpace(CutAtLineBreak(line));
    if (!name.empty() && name.front() != ';' && name.front() != '#') {
      Take(name, taken, names);
    }
  }
  if (std::ferror(file.Get()) != 0) {
    Log("***Can't read '%s'", path.c_str());
  }
  return names;
}

}  // namespace zqv
