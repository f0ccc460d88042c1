#include "Blinklog/RingFileFormat.h"

#include <string_view>

namespace Blinklog::RingFileFormat {
namespace {

void appendNumber(std::string& row, std::size_t number) {
  const auto narrow = static_cast<std::uint32_t>(number);
  row.append(reinterpret_cast<const char*>(&narrow), sizeof narrow);
}

void appendText(std::string& row, std::string_view text) {
  appendNumber(row, text.size());
  row.append(text);
}

}  // namespace

std::string toRow(const Site& site) {
  std::string row;
  appendNumber(row, site.line);
  appendNumber(row, site.level);
  appendNumber(row, site.fragments.size());
  appendText(row, site.path);
  appendText(row, site.function);
  for (const std::string& fragment : site.fragments)
    appendText(row, fragment);
  return row;
}

}  // namespace Blinklog::RingFileFormat
