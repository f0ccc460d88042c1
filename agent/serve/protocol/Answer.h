// Why: a client must see where an answer ends and whether its command was done, in either framing.
// Always: one answer per request. As JSON it is one line, {"status": N, "output": ...}. As text it
// is the lines of the output, each that begins with "." with another "." before it, and then a line
// that is "." and nothing else; an error is one line that begins with "error: ".
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "agent/language/ExitStatus.h"
#include "agent/reports/StateReport.h"
#include "agent/serve/protocol/Request.h"

namespace ZelAgent {

struct Answer {
  ExitStatus status = ExitStatus::success;
  OrderedJson output = "";  // a text, except where JSON was asked for; an error is always a text
};

[[nodiscard]] std::string toBytes(const Answer& answer, Framing framing);

}  // namespace ZelAgent
