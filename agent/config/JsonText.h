// Why: a JSON parser keeps the last of two members of one name and says nothing, and a
// configuration that says two things is wrong. This reads a file strictly.
// Always: the value returned was well-formed JSON in which no object has two members of one name;
// anything else is a ConfigError that gives the line and the column.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace ZelAgent {

[[nodiscard]] nlohmann::json readJsonFile(const std::string& file);

// `file` is what messages call the text.
[[nodiscard]] nlohmann::json parseJson(const std::string& text, const std::string& file);

}  // namespace ZelAgent
