#include "tests/agent/TestFiles.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/files/TemporaryFolder.h"

namespace ZelAgent {

std::string pathInTestFolder(const std::string& name) {
  const auto* const test = ::testing::UnitTest::GetInstance()->current_test_info();
  std::string folder = std::string(test->test_suite_name()) + '.' + test->name();
  for (char& character : folder) {
    if (character == '/') character = '.';
  }
  const auto path = TestFiles::processFolder() / folder;
  std::filesystem::create_directories(path);
  return path / name;
}

std::string writeFile(const std::string& name, const std::string& text) {
  const std::string path = pathInTestFolder(name);
  std::ofstream(path, std::ios::binary) << text;
  return path;
}

std::string readFile(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

}  // namespace ZelAgent
