// A folder for files that hold rings. It is removed at the end.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/files/TemporaryFolder.h"

namespace Blinklog {

class RingFolder final {
 public:
  [[nodiscard]] std::string path(const std::string& name) const { return folder_.path(name); }
  // The names of all that is in it.
  [[nodiscard]] std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.path()))
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
  TestFiles::TemporaryFolder folder_;
};

}  // namespace Blinklog
