#include "tests/agent/features/ExpectedTraffic.h"

#include <gtest/gtest.h>

#include <sstream>

namespace ZelAgent {
namespace {

std::string counterText(unsigned packets, unsigned bytes) {
  return std::to_string(packets) + " packets, " + std::to_string(bytes) + " bytes";
}

// The counters that are not 0.
std::map<std::string, std::string> shown(const nlohmann::json& entries, const char* name) {
  std::map<std::string, std::string> counters;
  for (const auto& entry : entries) {
    std::ostringstream key;
    key << entry.at(name);
    if (entry.at("packets") != 0)
      counters[key.str()] = counterText(entry.at("packets"), entry.at("bytes"));
  }
  return counters;
}

template <class Counts>
std::map<std::string, std::string> shown(const Counts& counts) {
  std::map<std::string, std::string> counters;
  for (const auto& [name, count] : counts) {
    std::ostringstream key;
    key << nlohmann::json(name);
    counters[key.str()] = counterText(count.packets, count.bytes);
  }
  return counters;
}

}  // namespace

void ExpectedTraffic::leaves(const PacketBytes& packet, unsigned rule, const std::string& interface,
                             const std::string& vrf, const PacketBytes& asItLeaves) {
  take(packet, rule);
  egress_[interface].push_back(asItLeaves);
  byVrf_[vrf].add(asItLeaves);
}

void ExpectedTraffic::isDropped(const PacketBytes& packet, unsigned rule,
                                const std::string& reason) {
  take(packet, rule);
  byDrop_[reason].add(packet);
}

void ExpectedTraffic::take(const PacketBytes& packet, unsigned rule) {
  sent_.push_back({"Ethernet1", packet});
  if (rule != noRule) byRule_[rule].add(packet);
}

void ExpectedTraffic::expectFrom(const OpenConfigBuilder& configuration,
                                 const std::string& events) const {
  const ForwardOutcome outcome = forwardThrough(configuration, events, sent_);
  EXPECT_EQ(outcome.egress, egress_);
  EXPECT_EQ(shown(outcome.counters.at("rules"), "rule"), shown(byRule_));
  EXPECT_EQ(shown(outcome.counters.at("vrfs"), "vrfName"), shown(byVrf_));
  EXPECT_EQ(shown(outcome.counters.at("drops"), "reason"), shown(byDrop_));
  EXPECT_EQ(outcome.counters.at("notIp"), 0);
}

}  // namespace ZelAgent
