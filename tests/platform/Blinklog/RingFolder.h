// A folder for files that hold rings; it is gone with this.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace Blinklog {

class RingFolder final {
 public:
  RingFolder() : folder_(::testing::TempDir() + "ring-XXXXXX") {
    EXPECT_NE(mkdtemp(folder_.data()), nullptr) << folder_;
  }
  RingFolder(const RingFolder&) = delete;
  RingFolder& operator=(const RingFolder&) = delete;
  ~RingFolder() { std::filesystem::remove_all(folder_); }

  [[nodiscard]] std::string path(const std::string& name) const { return folder_ + '/' + name; }
  // The names of all that is in it.
  [[nodiscard]] std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_))
      names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
  }

  static std::string read(const std::string& path) {
    std::ostringstream bytes;
    bytes << std::ifstream(path, std::ios::binary).rdbuf();
    return bytes.str();
  }
  static void write(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
  }

 private:
  std::string folder_;
};

}  // namespace Blinklog
