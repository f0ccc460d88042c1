// One world twice: the agent in this process, and the reference beside it.
#pragma once

#include <string>
#include <vector>

#include "agent/model/forwarding/ForwardingAgent.h"
#include "tests/agent/features/ForwardRun.h"
#include "tests/agent/features/RandomWorld.h"
#include "tests/agent/features/ReferenceForwarder.h"

namespace ZelAgent {

class ComparedWorld final {
 public:
  // Applies the configuration as it is written and read again, and plays the events.
  explicit ComparedWorld(const RandomWorld& world);

  // What the agent's chip did otherwise than the reference while the world was made; empty where
  // nothing.
  [[nodiscard]] const std::string& disagreement() const { return disagreement_; }

  // Sends the packet through both. Gives both verdicts where they differ, otherwise nothing.
  [[nodiscard]] std::string send(const Sent& sent);
  // Gives both counters where they differ, otherwise nothing.
  [[nodiscard]] std::string compareCounters();

  // The way that the agent's chip tells of the packet.
  [[nodiscard]] std::string explanation(const Sent& sent);
  [[nodiscard]] ReferenceForwarder& reference() { return reference_; }

 private:
  void take(const std::vector<Chips::HookCall>& calls);
  void compareResources();

  ForwardingAgent agent_;
  ReferenceForwarder reference_;
  std::string disagreement_;
};

[[nodiscard]] std::string inHex(const PacketBytes& packet);
[[nodiscard]] std::string shown(const ReferenceCounters& counters);

// A world with as little in it as possible in which the packet still goes two ways.
[[nodiscard]] RandomWorld smallestThatDiffers(RandomWorld world, const Sent& sent);

}  // namespace ZelAgent
