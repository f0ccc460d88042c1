// Why: an operator asks of a running agent where a packet would go, and why.
// Always: nothing is changed but the counters, in which the packet is one more.
#pragma once

#include "agent/commands/served/CommandCall.h"

namespace ZelAgent {

// explain INTERFACE PACKET, the packet as PacketText.h tells.
[[nodiscard]] CommandOutput explainPacket(const CommandCall& call);

}  // namespace ZelAgent
