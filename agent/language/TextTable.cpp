#include "agent/language/TextTable.h"

#include <algorithm>
#include <ostream>
#include <string_view>

namespace ZelAgent {
namespace {

// The number of characters. Each counts as one column.
std::size_t widthOf(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
    return (static_cast<unsigned char>(byte) & 0xc0U) != 0x80;
  }));
}

}  // namespace

void writeTable(std::ostream& out, const TextTable& table) {
  std::vector<std::size_t> widths(table.front().size());
  for (const auto& row : table) {
    for (std::size_t i = 0; i < row.size(); ++i)
      widths[i] = std::max(widths[i], widthOf(row[i]));
  }
  for (const auto& row : table) {
    out << ' ';
    for (std::size_t i = 0; i + 1 < row.size(); ++i) {
      out << ' ' << row[i] << std::string(widths[i] - widthOf(row[i]) + 1, ' ');
    }
    out << ' ' << row.back() << '\n';
  }
}

}  // namespace ZelAgent
