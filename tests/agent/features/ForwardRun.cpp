#include "tests/agent/features/ForwardRun.h"

#include <gtest/gtest.h>

#include "tests/agent/AgentProcess.h"

namespace ZelAgent {
namespace {

using nlohmann::json;
using Numbers = std::map<std::string, unsigned>;

// One capture for each interface; the times go on from packet to packet.
std::vector<std::string> capturesOf(const std::vector<Sent>& sent) {
  std::map<std::string, std::vector<CaptureFrame>> frames;
  std::int64_t nanoseconds = 0;
  for (const Sent& one : sent)
    frames[one.interface].push_back({inEthernet(one.packet), 1'700'000'000, ++nanoseconds});
  const auto folder = emptyFolder("in");
  std::vector<std::string> arguments;
  for (const auto& [interface, ofInterface] : frames) {
    const auto file = folder / (std::to_string(arguments.size()) + ".pcap");
    writeCapture(file, CaptureLink::ethernet, ofInterface);
    arguments.insert(arguments.end(), {"--in", interface + '=' + file.string()});
  }
  return arguments;
}

Numbers numbersOf(const json& entries, const char* name, const char* number) {
  Numbers numbers;
  for (const json& entry : entries)
    numbers[entry.at(name)] = entry.at(number);
  return numbers;
}

}  // namespace

json ForwardOutcome::rule(const std::string& interface, unsigned sequenceId) const {
  for (const json& entry : counters.at("rules")) {
    if (entry.at("interface") == interface && entry.at("rule") == sequenceId) {
      return {{"packets", entry.at("packets")}, {"bytes", entry.at("bytes")}};
    }
  }
  ADD_FAILURE() << "no rule " << sequenceId << " of " << interface;
  return {};
}

std::map<unsigned, unsigned> ForwardOutcome::packetsByRule(const std::string& interface) const {
  std::map<unsigned, unsigned> packets;
  for (const json& entry : counters.at("rules")) {
    if (entry.at("interface") == interface) packets[entry.at("rule")] = entry.at("packets");
  }
  return packets;
}

Numbers ForwardOutcome::packetsByVrf() const {
  return numbersOf(counters.at("vrfs"), "vrfName", "packets");
}

Numbers ForwardOutcome::packetsByDrop() const {
  return numbersOf(counters.at("drops"), "reason", "packets");
}

Numbers ForwardOutcome::bytesByVrf() const {
  return numbersOf(counters.at("vrfs"), "vrfName", "bytes");
}

Numbers ForwardOutcome::bytesByDrop() const {
  return numbersOf(counters.at("drops"), "reason", "bytes");
}

std::size_t ForwardOutcome::packetsOut() const {
  std::size_t packets = 0;
  for (const auto& [file, ofFile] : egress)
    packets += ofFile.size();
  return packets;
}

ForwardOutcome forwardThrough(const std::string& configurationFile, const std::string& events,
                              const std::vector<Sent>& sent) {
  const auto out = emptyFolder("out");
  std::vector<std::string> arguments{"forward", configurationFile, "--json", "--out", out};
  if (!events.empty())
    arguments.insert(arguments.end(), {"--events", writeFile("test.events", events)});
  const auto captures = capturesOf(sent);
  arguments.insert(arguments.end(), captures.begin(), captures.end());
  const AgentOutcome run = runAgent(arguments);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  ForwardOutcome outcome;
  for (const std::string& name : namesIn(out)) {
    const std::string interface = name.substr(0, name.rfind(".pcap"));
    for (const CaptureFrame& frame : readRawIpCapture(out / name))
      outcome.egress[interface].push_back(frame.bytes);
  }
  const auto documents = run.documents();
  EXPECT_EQ(documents.size(), 1U);
  outcome.counters = documents.empty() ? json::object() : documents.front();
  return outcome;
}

ForwardOutcome forwardThrough(const OpenConfigBuilder& configuration, const std::string& events,
                              const std::vector<Sent>& sent) {
  return forwardThrough(writeFile("test.json", configuration.text()), events, sent);
}

}  // namespace ZelAgent
