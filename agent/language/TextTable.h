// Why: every table that the agent prints is laid out alike.
// Always: two blanks in front of each column, which is as wide as its widest cell; nothing is
// appended to the last.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace ZelAgent {

// Rows of equally many cells, of printable text; the first is the heading.
using TextTable = std::vector<std::vector<std::string>>;

void writeTable(std::ostream& out, const TextTable& table);

}  // namespace ZelAgent
