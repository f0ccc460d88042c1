#pragma once

#include <string>

namespace ZelAgent {

/// Returns all bytes of the file.
///
/// Throws a `ConfigError` if it cannot be read. Its message asks for `wanted`, for example
/// "a readable JSON file", instead.
[[nodiscard]] std::string readTextFile(const std::string& file, const std::string& wanted);

}  // namespace ZelAgent
