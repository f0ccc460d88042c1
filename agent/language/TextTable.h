#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace ZelAgent {

/// A table in the layout of every table that the agent prints: rows of equally many cells of
/// printable text. The first row is the heading.
using TextTable = std::vector<std::vector<std::string>>;

/// Prints the table. Each column has two blanks in front and is as wide as its widest cell. The
/// last column is not padded.
void writeTable(std::ostream& out, const TextTable& table);

}  // namespace ZelAgent
