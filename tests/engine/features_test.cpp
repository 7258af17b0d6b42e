#include "features/feature_table.h"

#include <memory>

#include "session.h"

namespace {

TEST_F(SessionTest, PresetsSetTheFeaturesOfTheirProduct) {
  const struct {
    const char *client, *product, *preset;
    const char *states;  // Base, Server, FTA_Server, Explorer, Client, FTA_Client, JavaMsg, Toolkit: local or not
  } steps[] = {
      {"no", "server", "iwiSetFeaturesMinimum", "++------"},  {"no", "server", "iwiSetFeaturesTypical", "++-+--++"},
      {"", "client", "iwiSetFeaturesMinimum", "++-++---"},    {"", "client", "iwiSetFeaturesTypical", "++-++-++"},
      {"1", "xa", "iwiSetFeaturesMinimum", "++-++---"},       {"1", "xa", "iwiSetFeaturesTypical", "++-++-++"},
      {"yes", "server", "iwiSetFeaturesMinimum", "+---+---"}, {"yes", "server", "iwiSetFeaturesTypical", "+---+-++"}};
  const std::string trace = folder + "\\trace.log";
  Set("ZQVUSERTRACEPATH", trace);
  for (const char *action : {"CostInitialize", "FileCost", "CostFinalize"}) {
    EXPECT_EQ(MsiDoActionA(session, action), 0u) << action;
  }
  for (const bool oneLoad : {true, false}) {
    DeleteFileA(trace.c_str());
    auto library = std::make_unique<LoadedLibrary>();
    for (const auto &[client, product, preset, states] : steps) {
      if (!oneLoad) {
        library.reset();
        library = std::make_unique<LoadedLibrary>();
      }
      Set("ZQVCLIENT", client);
      Set("ZQVPRODUCT", product);
      EXPECT_EQ(library->Call(preset, session), 0u);
      for (int feature = 0; feature < 8; ++feature) {
        INSTALLSTATE installed = INSTALLSTATE_UNKNOWN, action = INSTALLSTATE_UNKNOWN;
        EXPECT_EQ(MsiGetFeatureStateA(session, kFeatureNames[feature], &installed, &action), 0u);
        EXPECT_EQ(action == INSTALLSTATE_LOCAL, states[feature] == '+') << preset << product << kFeatureNames[feature];
      }
    }
    const std::string log = ReadFile(trace), first = ": MsiSetInstallLevel(100) rc=0\r\n";
    EXPECT_EQ(log.find(first) == log.rfind(first), oneLoad);
    EXPECT_EQ(Contains(log, ": Install level already set\r\n"), oneLoad);
  }
  EXPECT_EQ(Get("INSTALLLEVEL"), "100");
}

}  // namespace
