#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <msi.h>
#include <msiquery.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

inline constexpr char kPackage[] = "engine_package\\engine.msi";

/// The package opened in this process, silent, with a temporary folder of its own. When the test ends, no
/// installer handle but the package's may be open, and the folder goes.
class SessionTest : public testing::Test {
 protected:
  SessionTest() {
    MsiSetInternalUI(INSTALLUILEVEL_NONE, nullptr);
    char temp[MAX_PATH];
    GetTempPathA(MAX_PATH, temp);
    folder = std::string(temp) + "engine" + std::to_string(GetTickCount()) + "_" + std::to_string(++count_);
    std::filesystem::create_directory(folder);
    EXPECT_EQ(MsiOpenPackageExA(kPackage, MSIOPENPACKAGEFLAGS_IGNOREMACHINESTATE, &session), 0u);
    Set("ZQVTEMP", folder);
  }
  ~SessionTest() override {
    MsiCloseHandle(session);
    EXPECT_EQ(MsiCloseAllHandles(), 0u);
    for (const auto &entry : std::filesystem::recursive_directory_iterator(folder)) {
      SetFileAttributesA(entry.path().string().c_str(), FILE_ATTRIBUTE_NORMAL);
    }
    std::filesystem::remove_all(folder);
  }

  void Set(const char *name, const std::string &value) { MsiSetPropertyA(session, name, value.c_str()); }

  static std::string ReadFile(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
  }

  MSIHANDLE session = 0;
  std::string folder;

 private:
  static inline int count_ = 0;
};
