#include "agent/CommandLine.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <iostream>
#include <limits>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

#include "Mox/TraceHandle.h"
#include "agent/commands/offline/OfflineCommands.h"
#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/language/Version.h"
#include "agent/language/Words.h"
#include "agent/serve/console/CtlCommand.h"
#include "agent/serve/daemon/Daemon.h"
#include "agent/serve/daemon/SignalWatch.h"

namespace ZelAgent {
namespace {

// What is wrong with the text as a count. Empty for a count.
std::string problemWithCount(const std::string& text) {
  if (parseNumber(text)) return {};
  return "must be a whole number from 0 to " +
         std::to_string(std::numeric_limits<std::uint32_t>::max()) + ", not " + inQuotes(text);
}

// What is wrong with the text as the argument of `show`. Empty for "limits".
std::string problemWithTopic(const std::string& text) {
  return text == "limits" ? std::string() : "must be limits, not " + inQuotes(text);
}

constexpr const char* eventsHelp =
    R"(Events, one per line. '#' begins a comment. A name with blanks or unprintable bytes is quoted: 'a\x00b'.
The name of the default VRF is default.
  vrf NAME id N                         the hardware assigns the id N to the VRF; 0 removes the id
  vrf NAME add [id N]                   the hardware reports a new status for the VRF. An id is read
                                        at once if the status replaces another one, otherwise when
                                        it changes or at the next update
  vrf NAME remove                       the hardware removes the VRF; its configuration stays
  fallback NAME to NAME                 the second VRF becomes the fallback VRF of the first
  fallback NAME remove                  remove the fallback VRF of the VRF
  decap-nh on|off                       enable or disable decapsulation by next hops
  decap-nh-fallback on|off              enable or disable fallback for decapsulating next hops
  prefix-lens ipv4|ipv6 NAME LENGTH...  set the prefix lengths of the VRF in exact match
  prefix-lens ipv4|ipv6 NAME remove     remove all prefix lengths of the VRF from exact match
  config FILE                           apply the file, from the folder of the event file, as a
                                        change of the configuration in force. What is equal in both
                                        keeps the state that events gave it
  chip capacity N                       set the number of VRF resources of the chip
  chip rules N                          set the number of rule entries of the chip, and ask again
                                        for rules that it refused
  chip fail VRF|any COUNT               make the next COUNT creations and updates fail
  route VRF PREFIX decap                add a route that decapsulates; it hides a configured one
  route VRF PREFIX via INTERFACE        add a route through the interface; it hides a configured one
  route VRF PREFIX remove               remove a route that an event has set
  retry                                 ask the chip again for all that it has refused
  show                                  print the actions, and each resource of the chip in full)";

void addCount(CLI::App& command, const std::string& name, std::uint32_t& count,
              const std::string& description) {
  command.add_option(name, count, description)
      ->capture_default_str()
      ->check(CLI::Validator(problemWithCount, "N"));
}

void addChip(CLI::App& command, ChipOptions& chip) {
  using PolicyMap::WhenFull;
  addCount(command, "--chip-capacity", chip.capacity, "Number of VRF resources of the chip");
  addCount(command, "--rule-capacity", chip.ruleCapacity, "Number of rule entries of the chip");
  command
      .add_option_function<std::string>(
          "--when-full",
          [&chip](const std::string& text) {
            chip.whenFull = text == "open" ? WhenFull::open : WhenFull::closed;
          },
          "An interface that has no rules in force, since those of its policy do not fit: closed "
          "drops its packets, open forwards them as without a policy")
      ->default_str("closed")
      ->type_name("closed|open")
      ->check([](const std::string& text) {
        return text == "closed" || text == "open" ? std::string()
                                                  : "must be closed or open, not " + inQuotes(text);
      });
}

// What each exit status of a command means.
struct StatusTexts {
  std::string success;
  std::string failure;
  std::string badInput;
};

std::string statusLine(ExitStatus status, const std::string& meaning) {
  return "\n  " + std::to_string(static_cast<int>(status)) + "  " + meaning;
}

std::string exitStatuses(const StatusTexts& texts) {
  return "Exit status:" + statusLine(ExitStatus::success, texts.success) +
         statusLine(ExitStatus::failure, texts.failure) +
         statusLine(ExitStatus::badInput, texts.badInput);
}

struct CommandLine {
  RunOptions run;
  CheckOptions check;
  DiffOptions diff;
  FallbackGraphOptions fallbackGraph;
  ForwardOptions forward;
  ExplainOptions explain;
  DaemonOptions serve;
  std::uint32_t clientTimeout = Limits::clientTimeout.count();  // seconds
  CtlOptions ctl;
  std::uint32_t ctlTimeout = Limits::ctlTimeout.count();  // seconds
  TraceOptions traceFile;
  LimitsOptions limits;
  bool dryRun = false;
  bool trace = false;
  std::optional<std::string> traceRing;  // a file
};

void addTraceRing(CLI::App& command, CommandLine& commandLine) {
  command
      .add_option("--trace-ring", commandLine.traceRing,
                  "Keep the last messages of the library in a file, which zel-agent trace prints")
      ->type_name("FILE");
}

void addLenient(CLI::App& command, Leniency& leniency) {
  command.add_flag_callback(
      "--lenient", [&leniency] { leniency = Leniency::lenient; },
      "Leave out a rule with a match, an action or another member that is not supported, with a "
      "warning; otherwise it is an error");
}

void describeCheck(CLI::App& app, CommandLine& commandLine) {
  CLI::App* const check = app.add_subcommand(
      "check", "Read configurations, and print all their errors and warnings; apply nothing");
  check->add_option("CONFIG", commandLine.check.configurations, "OpenConfig JSON files")
      ->required();
  addLenient(*check, commandLine.check.leniency);
  check
      ->add_option("--yang", commandLine.check.yangFolder,
                   "Also validate against the published YANG models in this folder, by yanglint")
      ->type_name("DIR");
  check->footer(exitStatuses({"every configuration is right", "standard output cannot be written",
                              "the command line or a configuration is wrong"}));
}

void describeRun(CLI::App& app, CommandLine& commandLine) {
  CLI::App* const run = app.add_subcommand(
      "run", "Apply configurations, each as a change of the previous one, and print the actions");
  run->add_option("CONFIG", commandLine.run.configurations, "OpenConfig JSON files")->required();
  run->add_option("--events", commandLine.run.events,
                  "An event file, played after the configurations")
      ->type_name("FILE");
  run->add_flag("--dry-run", commandLine.dryRun,
                "Print each call that would change the chip, in its order, and the outcome")
      ->excludes("--events");
  run->add_flag("--json", commandLine.run.json, "Print JSON, one document per line");
  run->add_flag(
      "--strict", commandLine.run.strict,
      "Exit with status 1 if a rule or an action was not programmed on the chip, and print "
      "what is missing at the end");
  addLenient(*run, commandLine.run.leniency);
  run->add_flag("--trace", commandLine.trace, "Print the library's trace to standard error");
  addChip(*run, commandLine.run.chip);
  addTraceRing(*run, commandLine);
  run->footer(std::string(eventsHelp) + "\n\n" +
              exitStatuses({"every configuration and event was applied",
                            "with --strict, a rule or an action was not programmed on the chip; or "
                            "standard output or FILE of --trace-ring cannot be written",
                            "the command line, a configuration or the event file is wrong"}));
}

void describeDiff(CLI::App& app, CommandLine& commandLine) {
  CLI::App* const diff =
      app.add_subcommand("diff", "Print what differs from one configuration to another");
  diff->add_option("BEFORE", commandLine.diff.before, "An OpenConfig JSON file")->required();
  diff->add_option("AFTER", commandLine.diff.after, "Another one")->required();
  diff->add_flag("--json", commandLine.diff.json, "Print the differences as JSON");
  addLenient(*diff, commandLine.diff.leniency);
  diff->footer(exitStatuses({"the configurations do not differ",
                             "they differ, or standard output cannot be written",
                             "the command line or a configuration is wrong"}));
}

void describeFallbackGraph(CLI::App& app, CommandLine& commandLine) {
  CLI::App* const graph = app.add_subcommand(
      "fallback-graph", "Print the fallback VRF of each VRF, and the actions that name each VRF");
  graph->add_option("CONFIG", commandLine.fallbackGraph.configuration, "An OpenConfig JSON file")
      ->required();
  graph->add_flag("--dot", commandLine.fallbackGraph.dot, "Print a Graphviz graph");
  addLenient(*graph, commandLine.fallbackGraph.leniency);
  graph->footer(exitStatuses({"the graph was printed", "standard output cannot be written",
                              "the command line or the configuration is wrong"}));
}

void describeInputs(CLI::App& command, std::string& configuration,
                    std::optional<std::string>& events) {
  command.add_option("CONFIG", configuration, "An OpenConfig JSON file")->required();
  command.add_option("--events", events, "An event file, played after the configuration")
      ->type_name("FILE");
}

void describeForward(CLI::App& app, CommandLine& commandLine) {
  CLI::App* const forward = app.add_subcommand(
      "forward", "Forward captured packets through the chip, and write captures of the result");
  describeInputs(*forward, commandLine.forward.configuration, commandLine.forward.events);
  forward
      ->add_option("--in", commandLine.forward.captures,
                   "A capture (pcap) of Ethernet or raw IP, and the interface on which it arrives")
      ->type_name("INTERFACE=FILE")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->required();
  forward
      ->add_option("--out", commandLine.forward.folder,
                   "The folder for one capture of each outgoing interface")
      ->type_name("DIR")
      ->required();
  forward->add_flag("--json", commandLine.forward.json, "Print the counters as JSON");
  addLenient(*forward, commandLine.forward.leniency);
  addTraceRing(*forward, commandLine);
  forward->footer(
      exitStatuses({"every packet was forwarded or dropped, and the captures were written",
                    "standard output or FILE of --trace-ring cannot be written",
                    "the command line, the configuration, the event file or a capture is wrong, or "
                    "a capture cannot be written"}));
}

constexpr const char* packetHelp =
    R"(A packet is written as
  ipv4|ipv6 SOURCE to DESTINATION [FIELD VALUE]... [carrying PACKET]
  hex BYTES
FIELD is protocol, dscp, ecn, ttl, length, fragment-offset, source-port, destination-port or
tcp-flags (such as syn,ack).)";

void describeExplain(CLI::App& app, CommandLine& commandLine) {
  CLI::App* const explain =
      app.add_subcommand("explain", "Print the path of one packet through the chip, step by step");
  describeInputs(*explain, commandLine.explain.configuration, commandLine.explain.events);
  explain
      ->add_option("--in", commandLine.explain.interface,
                   "The interface on which the packet arrives")
      ->type_name("INTERFACE")
      ->required();
  explain->add_option("--packet", commandLine.explain.packet, "The packet, written as below")
      ->type_name("TEXT")
      ->required();
  explain->add_flag("--json", commandLine.explain.json, "Print the steps as JSON");
  addLenient(*explain, commandLine.explain.leniency);
  addTraceRing(*explain, commandLine);
  explain->footer(std::string(packetHelp) + "\n\n" +
                  exitStatuses({"the path of the packet was printed",
                                "standard output or FILE of --trace-ring cannot be written",
                                "the command line, the configuration or the event file is wrong"}));
}

void describeServe(CLI::App& app, CommandLine& commandLine) {
  CLI::App* const serve = app.add_subcommand(
      "serve",
      "Run as a daemon: apply a configuration and serve a socket until SIGTERM; SIGHUP reloads");
  serve->add_option("CONFIG", commandLine.serve.configuration, "An OpenConfig JSON file")
      ->required();
  serve->add_option("--socket", commandLine.serve.socket, "The Unix socket to create")
      ->type_name("PATH")
      ->required();
  addLenient(*serve, commandLine.serve.leniency);
  addChip(*serve, commandLine.serve.chip);
  addCount(
      *serve, "--client-timeout", commandLine.clientTimeout,
      "Seconds after which a client that does not read its answer is disconnected; 0 for never");
  addTraceRing(*serve, commandLine);
  serve->footer(exitStatuses({"SIGTERM or SIGINT ended the daemon",
                              "the socket cannot be used, or standard output or FILE of "
                              "--trace-ring cannot be written",
                              "the command line is wrong, or the configuration was wrong at the "
                              "start"}));
}

void describeCtl(CLI::App& app, CommandLine& commandLine) {
  CLI::App* const ctl = app.add_subcommand("ctl",
                                           "Send a command to a daemon; without one, open a "
                                           "console or read commands from standard input");
  ctl->add_option("--socket", commandLine.ctl.socket, "The socket of the daemon")
      ->type_name("PATH")
      ->required();
  ctl->add_flag("--json", commandLine.ctl.json, "Print the output as JSON");
  ctl->add_flag("--no-pager", commandLine.ctl.noPager,
                "Print long answers in the console without a pause after each screen");
  addCount(*ctl, "--timeout", commandLine.ctlTimeout,
           "Seconds after which a daemon that sends nothing is given up; 0 for never");
  ctl->add_option(
      "COMMAND", commandLine.ctl.command,
      "The words of one command, or the command as one argument; help lists all commands");
  ctl->footer(exitStatuses({"every command succeeded, or the console ended",
                            "no daemon answers, a command failed, or standard output cannot be "
                            "written",
                            "the command line or a command is wrong, or a configuration that a "
                            "command applies"}) +
              "\n  Several commands return the highest of their statuses.");
}

void describeTrace(CLI::App& app, CommandLine& commandLine) {
  CLI::App* const trace = app.add_subcommand(
      "trace", "Print the messages of the library in a file that --trace-ring has written");
  trace->add_option("FILE", commandLine.traceFile.file, "The file of --trace-ring")->required();
  trace->add_flag("--json", commandLine.traceFile.json, "Print the messages as JSON");
  trace->footer(
      exitStatuses({"the messages were printed", "standard output cannot be written",
                    "the command line is wrong, or FILE cannot be read as a trace ring"}));
}

void describeShow(CLI::App& app, CommandLine& commandLine) {
  CLI::App* const show =
      app.add_subcommand("show", "Print the limits of the agent, without a daemon");
  show->add_option("WHAT", "limits: each limit, and the option that changes it")
      ->required()
      ->check(CLI::Validator(problemWithTopic, ""));
  show->add_flag("--json", commandLine.limits.json, "Print the limits as JSON");
  show->footer(exitStatuses({"the limits were printed", "standard output cannot be written",
                             "the command line is wrong"}));
}

std::string commandsOf(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* const command : app.get_subcommands(nullptr))
    names.push_back(command->get_name());
  return joined(names, ", ");
}

// What is wrong with the command line, and which help to read.
std::string usageProblem(const CLI::ParseError& error, const CLI::App& app) {
  const auto given = app.get_subcommands();
  if (given.empty()) {
    return "a command is required, one of: " + commandsOf(app) + "; see " + app.get_name() +
           " --help";
  }
  return printable(error.what(), Limits::shownTextBytes) + "; see " + app.get_name() + ' ' +
         given.front()->get_name() + " --help";
}

ExitStatus reportUsage(const CLI::ParseError& error, const CLI::App& app, std::ostream& out,
                       std::ostream& err) {
  if (error.get_exit_code() != 0) return reportError(err, usageProblem(error, app));
  const bool asksForVersion = dynamic_cast<const CLI::CallForVersion*>(&error) != nullptr;
  out << (asksForVersion ? std::string(error.what()) + '\n' : app.help());
  return finishOutput(out, err);
}

ExitStatus runCommand(const CLI::App& app, CommandLine& commandLine, Printing commands,
                      Printing daemon) {
  const bool isDaemon = app.got_subcommand("serve");
  const auto& [out, err] = isDaemon ? daemon : commands;
  if (commandLine.trace) Mox::traceLevelsIs("ZelVrfSelection=*");
  if (commandLine.traceRing) {
    const LineStart start = isDaemon ? warningStart(STDERR_FILENO) : LineStart();
    const ExitStatus kept = keepTraceIn(*commandLine.traceRing, err, start);
    if (kept != ExitStatus::success) return kept;
  }
  if (app.got_subcommand("diff")) return showDifference(commandLine.diff, out, err);
  if (app.got_subcommand("fallback-graph")) {
    return showFallbackGraph(commandLine.fallbackGraph, out, err);
  }
  if (app.got_subcommand("check")) return checkConfigurations(commandLine.check, out, err);
  if (app.got_subcommand("forward")) return forwardCaptures(commandLine.forward, out, err);
  if (app.got_subcommand("explain")) return explainPacket(commandLine.explain, out, err);
  if (isDaemon) {
    commandLine.serve.limits.clientTimeout = std::chrono::seconds(commandLine.clientTimeout);
    return serve(commandLine.serve, out, err);
  }
  if (app.got_subcommand("ctl")) {
    commandLine.ctl.timeout = std::chrono::seconds(commandLine.ctlTimeout);
    return control(commandLine.ctl, std::cin, out, err);
  }
  if (app.got_subcommand("trace")) return showTraceFile(commandLine.traceFile, out, err);
  if (app.got_subcommand("show")) return showLimits(commandLine.limits, out, err);
  if (commandLine.dryRun) return showCalls(commandLine.run, out, err);
  return runConfigurations(commandLine.run, out, err);
}

}  // namespace

ExitStatus runCommandLine(int argumentCount, const char* const* arguments, Printing commands,
                          Printing daemon) {
  if (argumentCount > 1 && std::string_view(arguments[1]) == "serve") blockSignal(SIGHUP);
  CommandLine commandLine;
  CLI::App app("Reference forwarding agent for VRF selection policies", "zel-agent");
  app.set_version_flag("--version", versionText(), "Print the version and exit");
  app.footer(exitStatuses({"the command succeeded", "the command failed: its --help says when",
                           "the command line, a configuration or another input file is wrong"}));
  app.require_subcommand(1);
  describeRun(app, commandLine);
  describeCheck(app, commandLine);
  describeDiff(app, commandLine);
  describeFallbackGraph(app, commandLine);
  describeForward(app, commandLine);
  describeExplain(app, commandLine);
  describeServe(app, commandLine);
  describeCtl(app, commandLine);
  describeTrace(app, commandLine);
  describeShow(app, commandLine);
  try {
    app.parse(argumentCount, arguments);
  } catch (const CLI::ParseError& error) {
    return reportUsage(error, app, commands.out, commands.err);
  }
  return runCommand(app, commandLine, commands, daemon);
}

}  // namespace ZelAgent
