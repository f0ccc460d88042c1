#include "agent/commands/offline/ExplainCommand.h"

#include <cstdint>
#include <nlohmann/json.hpp>
#include <ostream>
#include <vector>

#include "agent/commands/offline/PreparedAgent.h"
#include "agent/language/Errors.h"
#include "agent/model/events/EventLine.h"
#include "agent/model/packets/PacketText.h"
#include "agent/reports/WayReport.h"

namespace ZelAgent {
namespace {

std::vector<std::uint8_t> readWholePacket(const std::string& text) {
  try {
    EventLine line(text);
    std::vector<std::uint8_t> packet = readPacket(line);
    line.needEnd();
    return packet;
  } catch (const EventError& error) {
    throw EventError(std::string("--packet: ") + error.what());
  }
}

}  // namespace

ExitStatus explainPacket(const ExplainOptions& options, std::ostream& out, std::ostream& err) {
  try {
    const std::vector<std::uint8_t> packet = readWholePacket(options.packet);
    const auto agent = prepareAgent(options.configuration, options.events, err);
    const WayReport way = explain(*agent, options.interface, packet);
    out << (options.json ? oneLine(way.json()) + '\n' : way.text());
  } catch (const ConfigError& error) {
    return reportError(err, error.what());
  } catch (const EventError& error) {
    return reportError(err, error.what());
  }
  return finishOutput(out, err);
}

}  // namespace ZelAgent
