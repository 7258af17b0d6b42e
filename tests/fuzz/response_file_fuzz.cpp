#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "base/text.h"
#include "fake/world.h"
#include "features/answers/response_file.h"
#include "runtime/session.h"
#include "zqviwicn/load.h"

/// Whatever bytes a response file holds, reading it and looking its lines up ends, and gives values that the format
/// allows. A fuzzer calls this with bytes of its own; the tests call it with those in the folder corpus.

namespace {

using namespace zqv;

void Check(bool good) {
  if (!good) {
    std::abort();
  }
}

std::string LookUp(bool exactCase, const std::string &stanza, const std::string &keyword) {
  std::string value = "junk";
  Check(iwiGetResponseValue(exactCase, stanza, keyword, value) || value.empty());
  Check(value.find_first_of("\r\n") == std::string::npos);
  Check(value.empty() || (!IsSpace(value.back()) && value.back() != '"'));
  return value;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  World &world = ResetWorld();
  world.environment["X"] = "%X%";
  const std::string bytes(data, data + size);
  world.WriteFile("C:\\r.ini", bytes);
  Load();
  Session().handle = kSession;
  const bool good = iwiReadResponseFile("C:\\r.ini");
  const auto told = [](const std::string &line) {
    return line.ends_with("No stanza name") || line.ends_with("No keyword in line") || line.ends_with("No stanza");
  };
  Check(good == std::none_of(world.installerLog.begin(), world.installerLog.end(), told));
  for (std::size_t at = 0, end = 0; at < bytes.size(); at = end + 1) {
    end = std::min(bytes.find('\n', at), bytes.size());
    const std::string_view line = std::string_view(bytes).substr(at, end - at);
    const std::string keyword(StripSpace(line.substr(0, line.find('='))));
    const std::string exact = LookUp(true, "Response", keyword);
    Check(exact.empty() || exact == LookUp(true, "RESPONSE", keyword));
    LookUp(false, "Response", keyword);
  }
  Unload();
  Check(world.OpenHandles() == 0 && world.badCloses.empty());
  return 0;
}
