#include "agent/commands/offline/OfflineCommands.h"

#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <ostream>
#include <vector>

#include "agent/config/Configuration.h"
#include "agent/config/OpenConfigReader.h"
#include "agent/language/Errors.h"
#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/language/Progress.h"
#include "agent/language/TextFile.h"
#include "agent/model/events/EventLine.h"
#include "agent/model/events/EventNames.h"
#include "agent/model/events/EventPlayer.h"
#include "agent/model/events/EventReader.h"
#include "agent/model/forwarding/ApplyProgress.h"
#include "agent/model/forwarding/ForwardingAgent.h"
#include "agent/model/packets/Captures.h"
#include "agent/model/packets/PacketText.h"
#include "agent/reports/CounterReport.h"
#include "agent/reports/PathReport.h"

namespace ZelAgent {
namespace {

// Throws an `Error` unless the name can be that of an interface.
template <class Error>
void needInterfaceName(const std::string& name) {
  if (!name.empty() && name.size() <= Limits::nameBytes) return;
  throw Error("--in: INTERFACE must be an interface name of 1 to " +
              std::to_string(Limits::nameBytes) + " bytes, found " + inQuotes(name));
}

// A capture and its next packet.
class Source final {
 public:
  explicit Source(const std::string& capture)
      : interface_(interfaceOf(capture)),
        reader_(capture.substr(equalsSign(capture) + 1)),
        packet_(reader_.next()) {}

  [[nodiscard]] const std::string& interface() const noexcept { return interface_; }
  [[nodiscard]] const std::optional<CapturedPacket>& packet() const noexcept { return packet_; }
  void advance() { packet_ = reader_.next(); }

 private:
  static std::string interfaceOf(const std::string& capture) {
    std::string name = capture.substr(0, equalsSign(capture));
    needInterfaceName<CaptureError>(name);
    return name;
  }
  static std::size_t equalsSign(const std::string& capture) {
    const std::size_t at = capture.find('=');
    if (at == std::string::npos || at == 0) {
      throw CaptureError("--in must be INTERFACE=FILE, not " + inQuotes(capture));
    }
    return at;
  }

  std::string interface_;
  CaptureReader reader_;
  std::optional<CapturedPacket> packet_;
};

// The source with the earliest packet; the first of several; null if all are at their end.
Source* earliest(std::vector<Source>& sources) {
  Source* found = nullptr;
  for (Source& source : sources) {
    if (!source.packet()) continue;
    if (found == nullptr || source.packet()->time < found->packet()->time) found = &source;
  }
  return found;
}

std::vector<Source> openAll(const std::vector<std::string>& captures) {
  std::vector<Source> sources;
  sources.reserve(captures.size());
  for (const std::string& capture : captures)
    sources.emplace_back(capture);
  return sources;
}

void checkInterfaces(ForwardingAgent& agent, const std::vector<Source>& sources) {
  for (const Source& source : sources) {
    const std::string problem = problemWithInterface(agent, source.interface());
    if (!problem.empty()) throw CaptureError("--in: INTERFACE " + problem);
  }
}

ForwardCounters forwardAll(ForwardingAgent& agent, std::vector<Source>& sources,
                           CaptureFolder& folder) {
  std::uint64_t notIp = 0;
  Progress progress(Progress::terminal(STDERR_FILENO));
  progress.begin("forwarding", "packets", 0);
  while (Source* const source = earliest(sources)) {
    const CapturedPacket& captured = *source->packet();
    if (captured.ipPacket) {
      const Chips::Verdict verdict =
          agent.forwarder().forward(source->interface(), *captured.ipPacket);
      if (!verdict.drop) folder.write(verdict.egress, captured.time, verdict.packet);
    } else {
      ++notIp;
    }
    source->advance();
    progress.step();
  }
  return countersOf(agent, notIp);
}

std::vector<std::uint8_t> readWholePacket(const std::string& text) {
  try {
    EventLine line(text);
    return readPacket(line);
  } catch (const EventError& error) {
    throw EventError(std::string("--packet: ") + error.what());
  }
}

}  // namespace

std::unique_ptr<ForwardingAgent> prepareAgent(const std::string& configuration,
                                              const std::optional<std::string>& events,
                                              std::ostream& err, Leniency leniency) {
  Progress progress(Progress::terminal(STDERR_FILENO));
  const ReadConfiguration read = readOpenConfigFile(configuration, leniency, progress);
  reportWarnings(err, read.warnings);
  auto agent = std::make_unique<ForwardingAgent>(Limits::chipResources);
  {
    const ApplyProgress shown(*agent, progress, configuration,
                              rulesOnInterfaces(read.configuration));
    agent->apply(read.configuration);
  }
  if (!events) return agent;
  EventPlayer player(*agent, std::filesystem::path(*events).parent_path(), leniency);
  forEachEvent(readTextFile(*events, "a readable event file"), *events,
               [&](const EventPlace& /*place*/, const Event& event) {
                 reportWarnings(err, player.play(checkedEvent(*agent, event)).warnings);
               });
  return agent;
}

ExitStatus forwardCaptures(const ForwardOptions& options, std::ostream& out, std::ostream& err) {
  try {
    const auto agent = prepareAgent(options.configuration, options.events, err, options.leniency);
    std::vector<Source> sources = openAll(options.captures);
    checkInterfaces(*agent, sources);
    CaptureFolder folder(options.folder);
    const ForwardCounters counters = forwardAll(*agent, sources, folder);
    folder.keep();
    if (options.json) {
      writeJsonReport(out, counters);
    } else {
      writeTextReport(out, counters);
    }
  } catch (const ConfigError& error) {
    return reportError(err, error.what());
  } catch (const EventError& error) {
    return reportError(err, error.what());
  } catch (const CaptureError& error) {
    return reportError(err, error.what());
  }
  return finishOutput(out, err);
}

ExitStatus explainPacket(const ExplainOptions& options, std::ostream& out, std::ostream& err) {
  try {
    needInterfaceName<EventError>(options.interface);
    const std::vector<std::uint8_t> packet = readWholePacket(options.packet);
    const auto agent = prepareAgent(options.configuration, options.events, err, options.leniency);
    checkInterface(*agent, options.interface, "--in: INTERFACE");
    const PathReport report = explain(*agent, options.interface, packet);
    out << (options.json ? oneLine(report.json()) + '\n' : report.text());
  } catch (const ConfigError& error) {
    return reportError(err, error.what());
  } catch (const EventError& error) {
    return reportError(err, error.what());
  }
  return finishOutput(out, err);
}

}  // namespace ZelAgent
