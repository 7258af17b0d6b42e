#pragma once

#include <string>
#include <vector>

namespace zqv {

/// The queue managers of this machine, as a text in the data folder lists them.
inline constexpr char kQueueManagerList[] = "zqvqmgrs.txt";

/// Their names: one a line, stripped of blanks; blank lines and those that begin with ";" or "#" do not count, nor does
/// a name that is there already. A name is that of a folder and stands on command lines, so what is no plain file name
/// is told and passed over. Without that file there are none.
std::vector<std::string> ListQueueManagers(const std::string &dataFolder);

}  // namespace zqv
