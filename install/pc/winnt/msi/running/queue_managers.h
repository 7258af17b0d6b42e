#pragma once

#include <string>
#include <vector>

namespace zqv {

/// The names of the queue managers, as "zqvqmgrs.txt" in the data folder lists them: one a line, stripped of blanks;
/// blank lines and those that begin with ";" or "#" do not count. Without that file there are none.
std::vector<std::string> ListQueueManagers(const std::string &dataFolder);

}  // namespace zqv
