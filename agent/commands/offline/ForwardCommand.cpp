#include "agent/commands/offline/ForwardCommand.h"

#include <ostream>

#include "agent/commands/offline/PreparedAgent.h"
#include "agent/language/Errors.h"
#include "agent/language/PrintableText.h"
#include "agent/model/packets/Captures.h"
#include "agent/reports/CounterReport.h"

namespace ZelAgent {
namespace {

// A capture, and the next packet of it.
class Source final {
 public:
  explicit Source(const std::string& capture)
      : interface_(capture.substr(0, equalsSign(capture))),
        reader_(capture.substr(equalsSign(capture) + 1)),
        packet_(reader_.next()) {}

  [[nodiscard]] const std::string& interface() const noexcept { return interface_; }
  [[nodiscard]] const std::optional<CapturedPacket>& packet() const noexcept { return packet_; }
  void advance() { packet_ = reader_.next(); }

 private:
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

// The source whose packet is the earliest, the first of several; null when all are at their end.
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

ForwardCounters forwardAll(ForwardingAgent& agent, std::vector<Source>& sources,
                           CaptureFolder& folder) {
  std::uint64_t notIp = 0;
  while (Source* const source = earliest(sources)) {
    const CapturedPacket& captured = *source->packet();
    if (captured.ipPacket) {
      const SoftChip::Verdict verdict =
          agent.forwarder().forward(source->interface(), *captured.ipPacket);
      if (!verdict.drop) folder.write(verdict.egress, captured.time, verdict.packet);
    } else {
      ++notIp;
    }
    source->advance();
  }
  return countersOf(agent, notIp);
}

}  // namespace

ExitStatus forwardCaptures(const ForwardOptions& options, std::ostream& out, std::ostream& err) {
  try {
    const auto agent = prepareAgent(options.configuration, options.events, err);
    std::vector<Source> sources = openAll(options.captures);
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

}  // namespace ZelAgent
