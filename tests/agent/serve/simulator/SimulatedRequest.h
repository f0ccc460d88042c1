// Requests of simulated clients, as plain values.
#pragma once

#include <string>
#include <variant>

#include "agent/model/events/Event.h"
#include "agent/serve/protocol/Request.h"

namespace ZelAgent {

struct ReloadCommand {};
struct ShowConfig {};
struct ShowActions {};
// Another command. Its answer contains `part`.
struct OtherCommand {
  std::string text;
  std::string part;
};
// A blank line or a comment.
struct NoCommand {
  std::string text;
};
// It is refused by an error that contains `part`.
struct WrongRequest {
  std::string text;
  std::string part;
};
// A line that is longer than the longest request.
struct TooLongLine {};
// The bytes end within a line.
struct UnfinishedLine {};

using RequestKind = std::variant<Event, ReloadCommand, ShowConfig, ShowActions, OtherCommand,
                                 NoCommand, WrongRequest, TooLongLine, UnfinishedLine>;

struct SimulatedRequest {
  RequestKind kind;
  std::string bytes;  // with the line end
  Framing framing = Framing::text;
  bool asJson = false;  // the output
};

// The request as a line, in the framing. `asJson` is only for the framing of JSON.
[[nodiscard]] SimulatedRequest requestOf(RequestKind kind, Framing framing = Framing::text,
                                         bool asJson = false);

}  // namespace ZelAgent
