// Why: messages of the library are shown alike, whether they are asked of the process that wrote
// them or read from the file that it left.
// Always: oldest first, one line each in text, which is printable whatever the message holds. As
// JSON each is {sequence, level, path, line, function, text}.
#pragma once

#include <iosfwd>
#include <span>

#include "Blinklog/Record.h"
#include "agent/reports/StateJson.h"

namespace ZelAgent {

void writeTrace(std::ostream& out, std::span<const Blinklog::Record> records);
[[nodiscard]] OrderedJson traceJson(std::span<const Blinklog::Record> records);

}  // namespace ZelAgent
