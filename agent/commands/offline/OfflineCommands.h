#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "agent/config/Findings.h"
#include "agent/language/ExitStatus.h"
#include "agent/language/Limits.h"
#include "agent/language/LogLine.h"
#include "agent/model/forwarding/ForwardingAgent.h"

namespace ZelAgent {

// The commands of the command line that work without a daemon. Each prints its result on `out`, and
// each warning and error as one line on `err`.

/// Returns an agent to which the configuration and then the events of the file have been applied.
/// Prints each warning as one line on `err`. Throws a `ConfigError` or an `EventError` if anything
/// could not be applied.
[[nodiscard]] std::unique_ptr<ForwardingAgent> prepareAgent(
    const std::string& configuration, const std::optional<std::string>& events, std::ostream& err,
    Leniency leniency = Leniency::strict);

struct CheckOptions {
  std::vector<std::string> configurations;
  Leniency leniency = Leniency::strict;
  std::optional<std::string> yangFolder;  // of published YANG models
};

/// `zel-agent check`: reads each configuration and prints all its errors and warnings on `err`.
/// Nothing is applied. A configuration without errors is a line "FILE: right" on `out`. With a
/// folder of YANG models it must also be an instance of them, as YangModels.h describes.
[[nodiscard]] ExitStatus checkConfigurations(const CheckOptions& options, std::ostream& out,
                                             std::ostream& err);

struct RunOptions {
  std::vector<std::string> configurations;
  std::optional<std::string> events;  // a file
  bool json = false;
  bool strict = false;
  Leniency leniency = Leniency::strict;
  ChipOptions chip;
};

/// `zel-agent run`: applies configurations, then events, and prints what each does to the chip.
///
/// A report is printed after each configuration and event. A wrong one ends the run. At the end,
/// also after a wrong one, everything is removed and the empty agent is reported. With `strict` the
/// status is `failure` if a rule or an action was missing on the chip in a report. What is
/// missing at the end is printed on `err`, as MissingReport.h describes.
[[nodiscard]] ExitStatus runConfigurations(const RunOptions& options, std::ostream& out,
                                           std::ostream& err);

/// `zel-agent run --dry-run`: prints each call that would change the chip, as CallReport.h
/// describes it, while the configurations are applied to a chip of the given capacities. After the
/// calls of a configuration it prints how much is programmed, and what is not. Events are not
/// played.
[[nodiscard]] ExitStatus showCalls(const RunOptions& options, std::ostream& out, std::ostream& err);

struct DiffOptions {
  std::string before;  // a configuration
  std::string after;
  bool json = false;
  Leniency leniency = Leniency::strict;
};

/// `zel-agent diff`: prints what differs from one configuration to the other, as DifferenceReport.h
/// describes. Returns `failure` if they differ.
[[nodiscard]] ExitStatus showDifference(const DiffOptions& options, std::ostream& out,
                                        std::ostream& err);

struct FallbackGraphOptions {
  std::string configuration;
  bool dot = false;
  Leniency leniency = Leniency::strict;
};

/// `zel-agent fallback-graph`: prints the fallback VRF of each VRF of a configuration. The
/// configuration is not applied. Each cycle is also a warning.
[[nodiscard]] ExitStatus showFallbackGraph(const FallbackGraphOptions& options, std::ostream& out,
                                           std::ostream& err);

struct ForwardOptions {
  std::string configuration;
  std::optional<std::string> events;  // a file
  std::vector<std::string> captures;  // INTERFACE=FILE
  std::string folder;
  bool json = false;
  Leniency leniency = Leniency::strict;
};

/// `zel-agent forward`: forwards captured packets through the chip.
///
/// Packets of several captures are forwarded in the order of their times. Packets of one capture
/// are forwarded in the order of the file. After an error there are no output captures.
[[nodiscard]] ExitStatus forwardCaptures(const ForwardOptions& options, std::ostream& out,
                                         std::ostream& err);

struct ExplainOptions {
  std::string configuration;
  std::optional<std::string> events;  // a file
  std::string interface;
  std::string packet;  // as PacketText.h describes it
  bool json = false;
  Leniency leniency = Leniency::strict;
};

/// `zel-agent explain`: prints the path of one packet, step by step.
[[nodiscard]] ExitStatus explainPacket(const ExplainOptions& options, std::ostream& out,
                                       std::ostream& err);

struct TraceOptions {
  std::string file;
  bool json = false;
};

/// `zel-agent trace`: prints the messages of a trace file. Its process may have ended.
///
/// Prints every message that was written completely, oldest first. Prints nothing of a damaged
/// file. As JSON it is one document on one line, {process, madeAt, messages}: the number of the
/// process, the time when the file was made, and the messages as TraceReport.h describes them.
[[nodiscard]] ExitStatus showTraceFile(const TraceOptions& options, std::ostream& out,
                                       std::ostream& err);

struct LimitsOptions {
  bool json = false;
};

/// `zel-agent show limits`: prints the limits that are in force without options, as LimitsReport.h
/// describes them.
[[nodiscard]] ExitStatus showLimits(const LimitsOptions& options, std::ostream& out,
                                    std::ostream& err);

/// Moves the ring of this process into the file. Returns `failure` if that is not possible. A later
/// truncation of the file does not end the process, but is a line, which `start` begins.
[[nodiscard]] ExitStatus keepTraceIn(const std::string& file, std::ostream& err,
                                     LineStart start = {});

}  // namespace ZelAgent
