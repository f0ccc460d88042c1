#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "agent/language/ExitStatus.h"
#include "agent/reports/StateReport.h"
#include "agent/serve/protocol/Request.h"

namespace ZelAgent {

/// The answer to a request.
struct Answer {
  ExitStatus status = ExitStatus::success;
  OrderedJson output = "";  // a text, or JSON if the request wants it; an error is always a text
};

/// The bytes of the answer. A client can read the end and the status of the answer from them.
///
/// As JSON it is one line, {"status": N, "output": ...}. As text it is the lines of the output and
/// then the line ".". A line of the output that begins with "." has another "." before it. An error
/// is one line that begins with "error: ".
[[nodiscard]] std::string toBytes(const Answer& answer, Framing framing);

/// The lines of an output in an answer as text.
[[nodiscard]] std::string textLines(const std::string& output);
/// The line after them.
inline constexpr const char* endOfText = ".\n";

}  // namespace ZelAgent
