#include "agent/commands/served/ExplainPacket.h"

#include "agent/model/packets/PacketText.h"
#include "agent/reports/WayReport.h"

namespace ZelAgent {

CommandOutput explainPacket(const CommandCall& call) {
  call.arguments.formIs("explain INTERFACE PACKET");
  const std::optional<Word> interface = call.arguments.next();
  if (!interface || interface->text.empty()) {
    call.arguments.fail("INTERFACE must be the name of an interface", interface);
  }
  const std::vector<std::uint8_t> packet = readPacket(call.arguments);
  call.arguments.needEnd();
  const WayReport way = explain(call.served.agent(), interface->text, packet);
  return outputOf(
      call, [&](std::ostream& out) { out << way.text(); }, [&] { return way.json(); });
}

}  // namespace ZelAgent
