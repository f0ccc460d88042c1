#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "agent/config/JsonValue.h"
#include "agent/language/Progress.h"

namespace ZelAgent {

/// Reads JSON strictly. Messages call the text `file`.
///
/// Throws a `ConfigError` with line and column for text that is not well-formed JSON in UTF-8, for
/// an object with two members of the same name, and for values that nest deeper than
/// `Limits::documentLevels`. The JSON parser alone would keep the last of two members. It would
/// also ignore a NUL byte and everything after it, which is an error here. Each value is a look of
/// the progress.
[[nodiscard]] JsonValue parseDocument(const std::string& text, const std::string& file,
                                      Progress& progress);
[[nodiscard]] JsonValue parseDocument(const std::string& text, const std::string& file);

/// The same from a file. Also throws a `ConfigError` if the file cannot be read.
[[nodiscard]] JsonValue readDocumentFile(const std::string& file, Progress& progress);

/// The same as a value of the JSON library.
[[nodiscard]] nlohmann::json parseJson(const std::string& text, const std::string& file);

}  // namespace ZelAgent
