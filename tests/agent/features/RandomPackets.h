// Packets at random: most can be sent somewhere, and each way in which one can be wrong comes up.
#pragma once

#include "tests/agent/TestPackets.h"
#include "tests/agent/features/RandomWorld.h"

namespace ZelAgent {

[[nodiscard]] PacketBytes randomPacket(RandomChoices& choices);

}  // namespace ZelAgent
