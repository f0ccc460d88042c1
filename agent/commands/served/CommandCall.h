#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "agent/commands/served/ServedAgent.h"
#include "agent/model/events/EventLine.h"
#include "agent/reports/StateReport.h"

namespace ZelAgent {

/// One call of a command.
///
/// A command reads its arguments to the end before it changes anything. A wrong argument is an
/// `EventError`, and its text is the answer.
struct CommandCall {
  ServedAgent& served;
  std::string_view line;  // the whole command
  EventLine& arguments;   // what follows its name
  bool asJson = false;
};

/// A JSON text if text was asked for: any number of lines, each with its line end. Otherwise the
/// JSON document.
using CommandOutput = OrderedJson;

using Command = CommandOutput (*)(const CommandCall& call);

/// The output that was asked for: the text that `writeText` prints, or what `makeJson` returns.
[[nodiscard]] CommandOutput outputOf(const CommandCall& call,
                                     const std::function<void(std::ostream&)>& writeText,
                                     const std::function<CommandOutput()>& makeJson);

/// The output with a line in front for each warning, or as JSON with the member `warnings`.
[[nodiscard]] CommandOutput withWarnings(const CommandCall& call,
                                         const std::vector<std::string>& warnings,
                                         CommandOutput output);

}  // namespace ZelAgent
