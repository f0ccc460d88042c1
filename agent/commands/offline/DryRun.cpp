#include <unistd.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <variant>

#include "agent/commands/offline/OfflineCommands.h"
#include "agent/config/OpenConfigReader.h"
#include "agent/language/Errors.h"
#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/language/Progress.h"
#include "agent/model/forwarding/ApplyProgress.h"
#include "agent/model/forwarding/ForwardingAgent.h"
#include "agent/reports/CallReport.h"
#include "agent/reports/MissingReport.h"

namespace ZelAgent {
namespace {

// How much of what is configured the chip has.
struct Outcome {
  std::size_t actions = 0;
  std::size_t programmedActions = 0;
  std::size_t rules = 0;
  std::size_t programmedRules = 0;
};

Outcome outcomeOf(const AgentState& state, const RuleStates& rules) {
  Outcome outcome;
  outcome.actions = state.actions.size();
  outcome.programmedActions =
      outcome.actions - static_cast<std::size_t>(
                            std::count_if(state.actions.begin(), state.actions.end(), hasFailed));
  for (const RuleState& rule : rules) {
    if (rule.isPrevious) continue;
    ++outcome.rules;
    if (rule.place) ++outcome.programmedRules;
  }
  return outcome;
}

class DryRun final {
 public:
  DryRun(const RunOptions& options, std::ostream& out, std::ostream& err)
      : options_(options), out_(out), err_(err), agent_(options.chip) {}

  [[nodiscard]] ExitStatus runAll() {
    try {
      for (const std::string& file : options_.configurations)
        apply(file);
    } catch (const ConfigError& error) {
      out_.flush();
      status_ = reportError(err_, error.what());
    }
    return std::max(status_, finishOutput(out_, err_));
  }

 private:
  void apply(const std::string& file) {
    const ReadConfiguration read = readOpenConfigFile(file, options_.leniency, reading_);
    out_.flush();
    reportWarnings(err_, read.warnings);
    if (!options_.json) out_ << printable(file, Limits::shownTextBytes) << '\n';
    applyAndWrite(file, read.configuration);
    writeOutcome(file);
  }

  void applyAndWrite(const std::string& file, const Configuration& configuration) {
    const ProgressOf shown(applying_, "applying " + printable(file, Limits::shownTextBytes),
                           "rules", rulesOnInterfaces(configuration));
    agent_.chipObserverIs([this](const ChipCall& call) {
      write(call);
      if (std::holds_alternative<RuleCall>(call)) applying_.step();
    });
    agent_.apply(configuration);
    agent_.chipObserverIs({});
  }

  // On a terminal the calls themselves show how far the application is.
  [[nodiscard]] static Progress::Output besideTheCalls() {
    return isatty(STDOUT_FILENO) != 0 ? Progress::Output() : Progress::terminal(STDERR_FILENO);
  }

  void write(const ChipCall& call) {
    if (options_.json) {
      out_ << oneLine(toJson(call, agent_.chip())) << '\n';
    } else {
      out_ << "  " << toText(call, agent_.chip()) << '\n';
    }
  }

  void writeOutcome(const std::string& file) {
    const AgentState state = agent_.state(UserLists::none);
    const RuleStates rules = agent_.rules();
    const Outcome outcome = outcomeOf(state, rules);
    if (options_.json) {
      out_ << oneLine(
                  {{"configuration", file},
                   {"actions",
                    {{"configured", outcome.actions}, {"programmed", outcome.programmedActions}}},
                   {"rules",
                    {{"configured", outcome.rules}, {"programmed", outcome.programmedRules}}}})
           << '\n';
    } else {
      out_ << "  outcome: " << outcome.programmedActions << " of " << outcome.actions
           << " actions and " << outcome.programmedRules << " of " << outcome.rules
           << " rules programmed\n";
      writeMissing(out_, state, rules);
    }
    if (options_.strict && !isProgrammed(state)) status_ = ExitStatus::failure;
  }

  const RunOptions& options_;
  std::ostream& out_;
  std::ostream& err_;
  ForwardingAgent agent_;
  Progress reading_{Progress::terminal(STDERR_FILENO)};
  Progress applying_{besideTheCalls()};
  ExitStatus status_ = ExitStatus::success;
};

}  // namespace

ExitStatus showCalls(const RunOptions& options, std::ostream& out, std::ostream& err) {
  return DryRun(options, out, err).runAll();
}

}  // namespace ZelAgent
