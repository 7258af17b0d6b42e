#include "running/queue_managers.h"

#include "base/read_line.h"
#include "base/text.h"
#include "platform/c_file.h"
#include "platform/owner.h"
#include "runtime/log.h"

namespace zqv {

namespace {

constexpr char kListName[] = "zqvqmgrs.txt";

}  // namespace

std::vector<std::string> ListQueueManagers(const std::string &dataFolder) {
  const std::string path = Format("%s\\%s", dataFolder.c_str(), kListName);
  std::vector<std::string> names;
  const OwnedStream file(OpenCFile(path.c_str(), "rt"));
  if (!file) {
    Log("No queue manager list '%s'", path.c_str());
    return names;
  }
  std::string line;
  while (ReadLine(file.Get(), line) > 0) {
    const std::string_view name = StripSpace(CutAtLineBreak(line));
    if (!name.empty() && name.front() != ';' && name.front() != '#') {
      names.emplace_back(name);
      Log("Queue manager '%s'", names.back().c_str());
    }
  }
  if (std::ferror(file.Get()) != 0) {
    Log("***Can't read '%s'", path.c_str());
  }
  return names;
}

}  // namespace zqv
