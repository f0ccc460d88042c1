// Why: commands of every family are called alike, so that one table can hold them.
// Always: a command reads its arguments to the end before it changes anything; what is wrong with
// them is an EventError, and its text the answer.
#pragma once

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

#include "agent/commands/served/ServedAgent.h"
#include "agent/model/events/EventLine.h"
#include "agent/reports/StateReport.h"

namespace ZelAgent {

struct CommandCall {
  ServedAgent& served;
  std::string_view line;  // the whole command
  EventLine& arguments;   // what follows its name
  bool asJson = false;
};

// A text where text was asked for, of any number of lines each with its line end.
using CommandOutput = OrderedJson;

using Command = CommandOutput (*)(const CommandCall& call);

// The output that was asked for, of those that `writeText` (to a stream) and `makeJson` give.
template <class WriteText, class MakeJson>
[[nodiscard]] CommandOutput outputOf(const CommandCall& call, WriteText writeText,
                                     MakeJson makeJson) {
  if (call.asJson) return makeJson();
  std::ostringstream text;
  writeText(text);
  return std::move(text).str();
}

}  // namespace ZelAgent
