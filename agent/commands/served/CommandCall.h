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
/// A command reads all its arguments before it changes anything. A wrong argument is an
/// `EventError`, and its text is the answer.
struct CommandCall {
  ServedAgent& served;
  std::string_view line;  // the whole command
  EventLine& arguments;   // what follows its name
  bool asJson = false;
};

/// The output of a command. As text it is a JSON string: any number of lines, each with its line
/// end. As JSON it is the document.
using CommandOutput = OrderedJson;

using Command = CommandOutput (*)(const CommandCall& call);

/// The output of the call: the text that `writeText` prints, or the JSON that `makeJson` returns.
[[nodiscard]] CommandOutput outputOf(const CommandCall& call,
                                     const std::function<void(std::ostream&)>& writeText,
                                     const std::function<CommandOutput()>& makeJson);

/// The output with the warnings: as text one line each in front, as JSON the member `warnings`.
[[nodiscard]] CommandOutput withWarnings(const CommandCall& call,
                                         const std::vector<std::string>& warnings,
                                         CommandOutput output);

}  // namespace ZelAgent
