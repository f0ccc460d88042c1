// Why: a story is written by people, so every line is read strictly and a mistake is explained.
// Always: a line gives one event, or nothing where it is blank or a comment ('#' to its end), or an
// EventError. The forms:
//
//   vrf NAME id N                        fallback NAME to NAME       decap-nh on|off
//   vrf NAME remove                      fallback NAME remove        decap-nh-fallback on|off
//   vrf NAME add [id N]                  config FILE                 show
//   prefix-lens ipv4|ipv6 NAME LENGTH... chip capacity N
//   prefix-lens ipv4|ipv6 NAME remove    chip fail VRF|any COUNT
//
// A word with blanks or odd bytes in it is quoted in the platform's string form.
#pragma once

#include <optional>
#include <string_view>

#include "agent/model/events/Event.h"

namespace ZelAgent {

[[nodiscard]] std::optional<Event> readEvent(std::string_view text);

}  // namespace ZelAgent
