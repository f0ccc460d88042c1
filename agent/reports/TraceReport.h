#pragma once

#include <iosfwd>
#include <span>

#include "Blinklog/Record.h"
#include "agent/reports/StateReport.h"

namespace ZelAgent {

/// Prints messages of the library, oldest first, one printable line each with its time. The
/// messages are from the ring of this process or from the file of another process.
void writeTrace(std::ostream& out, std::span<const Blinklog::Record> records);

/// The same as an array of {sequence, time, level, path, line, function, text}.
[[nodiscard]] OrderedJson traceJson(std::span<const Blinklog::Record> records);
/// Prints that array, and keeps only one message of it in memory.
void writeJsonTrace(std::ostream& out, std::span<const Blinklog::Record> records);

}  // namespace ZelAgent
