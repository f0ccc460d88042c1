#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "agent/model/events/Event.h"

namespace ZelAgent {

/// Reads one line of an event file. Returns nothing for a blank line and for a comment ('#' to the
/// end of the line). Throws an `EventError` for any other line that is not one of these forms:
///
///     vrf NAME id N                        fallback NAME to NAME       decap-nh on|off
///     vrf NAME remove                      fallback NAME remove        decap-nh-fallback on|off
///     vrf NAME add [id N]                  config FILE                 show
///     prefix-lens ipv4|ipv6 NAME LENGTH... chip capacity N
///     prefix-lens ipv4|ipv6 NAME remove    chip fail VRF|any COUNT
///     route VRF PREFIX decap               route VRF PREFIX via INTERFACE
///     route VRF PREFIX remove
///
/// A word with blanks or unprintable bytes is quoted in the platform's string form.
[[nodiscard]] std::optional<Event> readEvent(std::string_view text);

/// Where an event is, for messages and reports.
struct EventPlace {
  std::string file;
  std::size_t line = 0;  // from 1

  /// FILE:LINE, printable.
  [[nodiscard]] std::string text() const;
};

using EventVisitor = std::function<void(const EventPlace&, const Event&)>;

/// Calls `visit` with each event of the text, in order. Each line is read after the event before it
/// has been visited. An `EventError` of a line or of its visit ends the walk and is thrown with the
/// place in front.
void forEachEvent(const std::string& text, const std::string& file, const EventVisitor& visit);

}  // namespace ZelAgent
