// Files that a test writes and reads. Each test has its own folder in the folder of the process.
#pragma once

#include <string>

namespace ZelAgent {

[[nodiscard]] std::string pathInTestFolder(const std::string& name);

// Writes a file of the test that runs, and gives its path.
std::string writeFile(const std::string& name, const std::string& text);

[[nodiscard]] std::string readFile(const std::string& path);

}  // namespace ZelAgent
