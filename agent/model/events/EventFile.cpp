#include "agent/model/events/EventFile.h"

#include <string_view>

#include "agent/language/Errors.h"
#include "agent/language/PrintableText.h"
#include "agent/model/events/EventReader.h"

namespace ZelAgent {
namespace {

void visitLine(std::string_view line, const EventPlace& place, const EventVisitor& visit) {
  try {
    if (const auto event = readEvent(line)) visit(place, *event);
  } catch (const EventError& error) {
    throw EventError(place.text() + ": " + error.what());
  }
}

}  // namespace

std::string EventPlace::text() const {
  return printable(file, 1000) + ':' + std::to_string(line);
}

void forEachEvent(const std::string& text, const std::string& file, const EventVisitor& visit) {
  std::string_view rest = text;
  EventPlace place{file, 0};
  while (!rest.empty()) {
    ++place.line;
    const std::size_t end = rest.find('\n');
    visitLine(rest.substr(0, end), place, visit);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  }
}

}  // namespace ZelAgent
