#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace ZelAgent {

/// Reads a JSON file strictly.
///
/// Throws a `ConfigError` with line and column for text that is not well-formed JSON, and for an
/// object with two members of the same name. The JSON parser alone would keep the last of them. It
/// would also ignore a NUL byte and everything after it, which is an error here.
[[nodiscard]] nlohmann::json readJsonFile(const std::string& file);

/// The same from a text. Messages call it `file`.
[[nodiscard]] nlohmann::json parseJson(const std::string& text, const std::string& file);

}  // namespace ZelAgent
