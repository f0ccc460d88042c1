// Why: a story is played as it is read, so that what goes before a mistake is seen; and whoever
// plays it should not have to count lines.
// Always: events come in the order of the file, and none after an error.
#pragma once

#include <functional>
#include <string>

#include "agent/model/events/Event.h"

namespace ZelAgent {

// Where an event stands, for messages and reports.
struct EventPlace {
  std::string file;
  std::size_t line = 0;  // from 1

  // FILE:LINE, printable.
  [[nodiscard]] std::string text() const;
};

using EventVisitor = std::function<void(const EventPlace&, const Event&)>;

// Calls `visit` with each event of the text. An EventError of a line, or of its visit, is passed on
// with its place in front.
void forEachEvent(const std::string& text, const std::string& file, const EventVisitor& visit);

}  // namespace ZelAgent
