#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "agent/language/ExitStatus.h"
#include "agent/model/forwarding/ForwardingAgent.h"

namespace ZelAgent {

// The commands of the command line that work without a daemon. Each prints its result on `out`, and
// warnings and errors on `err`, one line each.

/// An agent to which the configuration, and then the events of a file, have been applied. Prints
/// warnings on `err`, a line each. Throws a `ConfigError` or an `EventError` if anything could not
/// be applied.
[[nodiscard]] std::unique_ptr<ForwardingAgent> prepareAgent(
    const std::string& configuration, const std::optional<std::string>& events, std::ostream& err);

struct RunOptions {
  std::vector<std::string> configurations;
  std::optional<std::string> events;  // a file
  bool json = false;
  bool strict = false;
  std::uint32_t chipCapacity = usualChipCapacity;
};

/// `zel-agent run`: what a series of configurations, and then of events, does to the chip.
///
/// Each configuration and event that was applied is reported. A wrong one ends the series. At the
/// end, also after a wrong one, everything is removed and the empty agent is reported.
[[nodiscard]] ExitStatus runConfigurations(const RunOptions& options, std::ostream& out,
                                           std::ostream& err);

struct FallbackGraphOptions {
  std::string configuration;
  bool dot = false;
};

/// `zel-agent fallback-graph`: which VRF falls back to which in a configuration, which is not
/// applied. Each cycle is also a warning.
[[nodiscard]] ExitStatus showFallbackGraph(const FallbackGraphOptions& options, std::ostream& out,
                                           std::ostream& err);

struct ForwardOptions {
  std::string configuration;
  std::optional<std::string> events;  // a file
  std::vector<std::string> captures;  // INTERFACE=FILE
  std::string folder;
  bool json = false;
};

/// `zel-agent forward`: sends captured packets through the chip.
///
/// Packets of several captures are sent in the order of their times, those of one capture in the
/// order of the file. The captures of what leaves are written whole or not at all.
[[nodiscard]] ExitStatus forwardCaptures(const ForwardOptions& options, std::ostream& out,
                                         std::ostream& err);

struct ExplainOptions {
  std::string configuration;
  std::optional<std::string> events;  // a file
  std::string interface;
  std::string packet;  // as PacketText.h describes it
  bool json = false;
};

/// `zel-agent explain`: the way of one packet, step by step.
[[nodiscard]] ExitStatus explainPacket(const ExplainOptions& options, std::ostream& out,
                                       std::ostream& err);

struct TraceOptions {
  std::string file;
  bool json = false;
};

/// `zel-agent trace`: the messages in the file in which a process, which may be gone, kept its
/// ring.
///
/// Every message that was written completely is shown, oldest first. Nothing is shown of a file
/// that is damaged. As JSON it is one document on one line, {process, madeAt, messages}: the number
/// of the process, when it began to write there, and the messages as TraceReport.h describes them.
[[nodiscard]] ExitStatus showTraceFile(const TraceOptions& options, std::ostream& out,
                                       std::ostream& err);

/// Keeps the ring of this process in the file from now on. Returns `failure` if that is not
/// possible.
[[nodiscard]] ExitStatus keepTraceIn(const std::string& file, std::ostream& err);

}  // namespace ZelAgent
