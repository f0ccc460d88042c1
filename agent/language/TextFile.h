// Why: configurations and event files are read whole, and fail to be read in the same words.
// Always: all bytes of the file, or a ConfigError that says why there are none.
#pragma once

#include <string>

namespace ZelAgent {

// `wanted` is what a message asks for in place of a file that cannot be read.
[[nodiscard]] std::string readTextFile(const std::string& file, const std::string& wanted);

}  // namespace ZelAgent
