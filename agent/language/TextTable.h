#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

namespace ZelAgent {

/// A table in the layout of every table that the agent prints: rows of equally many cells of
/// printable text. The first row is the heading.
using TextTable = std::vector<std::vector<std::string>>;

/// Prints the table. Each column has two blanks in front and is as wide as its widest cell. The
/// last column is not padded.
///
/// If the stream has a number of columns (`tableColumnsAre`) and the table is wider, the widest
/// columns of the table are narrowed until it fits. A cell that is wider than its column continues
/// on the next line. A column is never narrower than its heading.
void writeTable(std::ostream& out, const TextTable& table);

/// Limits the width of the tables that are printed on the stream. 0 sets no limit.
void tableColumnsAre(std::ostream& out, std::size_t columns);

}  // namespace ZelAgent
