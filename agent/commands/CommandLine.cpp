#include "agent/commands/CommandLine.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <limits>
#include <ostream>
#include <string>

#include "Mox/TraceHandle.h"
#include "agent/commands/RunCommand.h"
#include "agent/config/PrintableText.h"

namespace ZelAgent {
namespace {

// What is wrong with the text as a count; empty where nothing is.
std::string problemWithCount(const std::string& text) {
  std::uint32_t count = 0;
  const char* const end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, count);
  if (error == std::errc{} && stopped == end) return {};
  return "must be a whole number from 0 to " +
         std::to_string(std::numeric_limits<std::uint32_t>::max()) + ", not " + inQuotes(text);
}

struct CommandLine {
  RunOptions run;
  bool trace = false;
};

void describeRun(CLI::App& app, CommandLine& commandLine) {
  CLI::App* const run = app.add_subcommand(
      "run", "Apply configurations in turn, each as a change of the one before, and report");
  run->add_option("CONFIG", commandLine.run.configurations, "OpenConfig JSON files")->required();
  run->add_flag("--json", commandLine.run.json, "Report as JSON, one document per line");
  run->add_flag("--strict", commandLine.run.strict,
                "Exit with status 1 when an action was not programmed on the chip");
  run->add_flag("--trace", commandLine.trace, "Write the library's trace to standard error");
  run->add_option("--chip-capacity", commandLine.run.chipCapacity,
                  "VRF resources that the chip has")
      ->capture_default_str()
      ->check(CLI::Validator(problemWithCount, "N"));
}

std::string commandsOf(const CLI::App& app) {
  std::string names;
  for (const CLI::App* const command : app.get_subcommands(nullptr)) {
    names += (names.empty() ? "" : ", ") + command->get_name();
  }
  return names;
}

// What is wrong, and where to read what would be right.
std::string usageProblem(const CLI::ParseError& error, const CLI::App& app) {
  const auto given = app.get_subcommands();
  if (given.empty()) {
    return "a command is required, one of: " + commandsOf(app) + "; see " + app.get_name() +
           " --help";
  }
  return printable(error.what(), 1000) + "; see " + app.get_name() + ' ' +
         given.front()->get_name() + " --help";
}

ExitStatus reportUsage(const CLI::ParseError& error, const CLI::App& app, std::ostream& out,
                       std::ostream& err) {
  if (error.get_exit_code() == 0) {
    out << app.help();
    return ExitStatus::success;
  }
  err << "error: " << usageProblem(error, app) << '\n';
  return ExitStatus::badInput;
}

}  // namespace

ExitStatus runCommandLine(int argumentCount, const char* const* arguments, std::ostream& out,
                          std::ostream& err) {
  CommandLine commandLine;
  CLI::App app("Reference forwarding agent for VRF selection policies", "zel-agent");
  app.require_subcommand(1);
  describeRun(app, commandLine);
  try {
    app.parse(argumentCount, arguments);
  } catch (const CLI::ParseError& error) {
    return reportUsage(error, app, out, err);
  }
  if (commandLine.trace) Mox::traceLevelsIs("ZelVrfSelection=*");
  return runConfigurations(commandLine.run, out, err);
}

}  // namespace ZelAgent
