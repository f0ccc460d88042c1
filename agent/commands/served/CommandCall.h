#pragma once

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "agent/commands/served/ServedAgent.h"
#include "agent/model/events/EventLine.h"
#include "agent/model/forwarding/AgentState.h"
#include "agent/reports/ReportPages.h"
#include "agent/reports/StateReport.h"

namespace ZelAgent {

/// How the output of a command is written.
struct OutputForm {
  bool asJson = false;
  std::size_t columns = 0;  // the width of tables in a text; 0 for no limit
};

/// One call of a command.
///
/// A command reads all its arguments before it changes anything. A wrong argument is an
/// `EventError`, and its text is the answer.
struct CommandCall : OutputForm {
  ServedAgent& served;
  std::string_view line;  // the whole command, with whole keywords
  EventLine& arguments;   // what follows its name
};

/// What a snapshot needs for the output: only JSON has the users of actions.
[[nodiscard]] inline UserLists userListsOf(const CommandCall& call) noexcept {
  return call.asJson ? UserLists::all : UserLists::none;
}

/// The output of a command. As text it is a JSON string: any number of lines, each with its line
/// end. As JSON it is the document.
using CommandOutput = OrderedJson;

/// The output of a command that may have to wait for a change of the configuration in progress.
/// Returns none while it waits. The first call begins what the command does. A call throws as a
/// command does. It is not called again after it has returned an output or thrown. It refers to the
/// served agent.
using AwaitedOutput = std::function<std::optional<CommandOutput>()>;

/// The output of a command: all of it, pages that are made when they are needed, or an output to
/// wait for. The pages refer to the served agent.
using CommandResult = std::variant<CommandOutput, ReportPagesPtr, AwaitedOutput>;

/// A command, by the kind of its result.
class Command final {
 public:
  constexpr Command(CommandOutput (*run)(const CommandCall& call)) noexcept
      : run_(run) {}                                                          // NOLINT
  constexpr Command(ReportPagesPtr (*run)(const CommandCall& call)) noexcept  // NOLINT
      : start_(run) {}
  constexpr Command(AwaitedOutput (*run)(const CommandCall& call)) noexcept  // NOLINT
      : await_(run) {}

  [[nodiscard]] CommandResult operator()(const CommandCall& call) const;
  bool operator==(const Command&) const = default;

 private:
  CommandOutput (*run_)(const CommandCall& call) = nullptr;
  ReportPagesPtr (*start_)(const CommandCall& call) = nullptr;
  AwaitedOutput (*await_)(const CommandCall& call) = nullptr;
};

/// The output in the form: the text that `writeText` prints, or the JSON that `makeJson` returns.
[[nodiscard]] CommandOutput outputOf(const OutputForm& form,
                                     const std::function<void(std::ostream&)>& writeText,
                                     const std::function<CommandOutput()>& makeJson);

/// The output with the warnings: as text one line each in front, as JSON the member `warnings`.
[[nodiscard]] CommandOutput withWarnings(const OutputForm& form,
                                         const std::vector<std::string>& warnings,
                                         CommandOutput output);

}  // namespace ZelAgent
