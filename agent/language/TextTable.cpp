#include "agent/language/TextTable.h"

#include <algorithm>
#include <numeric>
#include <ostream>
#include <string_view>
#include <utility>

#include "agent/language/DisplayWidth.h"

namespace ZelAgent {
namespace {

using Widths = std::vector<std::size_t>;
using Row = std::vector<std::string>;

constexpr std::size_t gap = 2;        // blanks in front of each column
constexpr std::size_t narrowest = 8;  // a column is not made narrower

// The place of the number of columns in a stream.
int columnsPlace() {
  static const int place = std::ios_base::xalloc();
  return place;
}

std::size_t columnsOf(std::ostream& out) {
  return static_cast<std::size_t>(out.iword(columnsPlace()));
}

Widths widthsOf(const TextTable& table) {
  Widths widths(table.front().size());
  for (const Row& row : table) {
    for (std::size_t i = 0; i < row.size(); ++i)
      widths[i] = std::max(widths[i], displayWidth(row[i]));
  }
  return widths;
}

std::size_t totalOf(const Widths& widths) {
  return std::accumulate(widths.begin(), widths.end(), gap * widths.size());
}

// Takes one column after the other from the widest that may be narrower.
void fit(Widths& widths, const Row& heading, std::size_t columns) {
  const auto spare = [&](std::size_t i) {
    return widths[i] > std::max(narrowest, displayWidth(heading[i])) ? widths[i] : 0;
  };
  for (std::size_t total = totalOf(widths); total > columns; --total) {
    std::size_t widest = 0;
    for (std::size_t i = 1; i < widths.size(); ++i) {
      if (spare(i) > spare(widest)) widest = i;
    }
    if (spare(widest) == 0) return;
    --widths[widest];
  }
}

// Takes what the next line of the cell shows off its text. Lines end at blanks where possible.
std::string takeLine(std::string_view& text, std::size_t width) {
  const std::size_t most = bytesWithin(text, width);
  if (most == text.size()) return std::string(std::exchange(text, {}));
  const std::size_t blank = text.rfind(' ', most);
  const bool hasBlank = blank != std::string_view::npos && blank > 0;
  const std::size_t end = hasBlank ? blank : std::max<std::size_t>(most, 1);
  std::string line(text.substr(0, end));
  text.remove_prefix(hasBlank ? end + 1 : end);
  return line;
}

// Every cell but the last is padded.
void writeLine(std::ostream& out, const Row& cells, const Widths& widths) {
  out << ' ';
  for (std::size_t i = 0; i + 1 < cells.size(); ++i)
    out << ' ' << cells[i] << std::string(widths[i] - displayWidth(cells[i]) + 1, ' ');
  out << ' ' << cells.back() << '\n';
}

// Prints the row on as many lines as its cells need.
void writeLines(std::ostream& out, const Row& row, const Widths& widths) {
  std::vector<std::string_view> rest(row.begin(), row.end());
  bool isFirst = true;
  while (isFirst ||
         std::any_of(rest.begin(), rest.end(), [](auto text) { return !text.empty(); })) {
    Row line;
    for (std::size_t i = 0; i < rest.size(); ++i)
      line.push_back(takeLine(rest[i], widths[i]));
    while (!isFirst && line.back().empty())
      line.pop_back();
    writeLine(out, line, widths);
    isFirst = false;
  }
}

}  // namespace

void writeTable(std::ostream& out, const TextTable& table) {
  Widths widths = widthsOf(table);
  const std::size_t columns = columnsOf(out);
  if (columns == 0 || totalOf(widths) <= columns) {
    for (const Row& row : table)
      writeLine(out, row, widths);
    return;
  }
  fit(widths, table.front(), columns);
  for (const Row& row : table)
    writeLines(out, row, widths);
}

void tableColumnsAre(std::ostream& out, std::size_t columns) {
  out.iword(columnsPlace()) = static_cast<long>(columns);
}

}  // namespace ZelAgent
