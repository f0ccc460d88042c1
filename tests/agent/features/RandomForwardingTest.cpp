// The agent against a plain reference, over configurations, events and packets at random.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "agent/commands/offline/OfflineCommands.h"
#include "agent/language/Limits.h"
#include "testing/RandomSeed.h"
#include "tests/agent/AgentProcess.h"
#include "tests/agent/CaptureFile.h"
#include "tests/agent/features/ComparedWorld.h"
#include "tests/agent/features/RandomCaptures.h"
#include "tests/agent/features/RandomMatches.h"
#include "tests/agent/features/RandomPackets.h"

namespace ZelAgent {
namespace {

using ::testing::UnorderedElementsAre;
using ZelVrfSelectionPolicy::Testing::RandomSeed;

constexpr unsigned worlds = 300;
constexpr unsigned packetsOfAWorld = 200;
constexpr unsigned worldsOfCaptures = 10;

// Each world has a seed of its own, so that worlds do not depend on each other.
RandomChoices choicesOf(const RandomSeed& seed, unsigned world) {
  return RandomChoices(seed.value() + world * 7919U);
}

std::string filesOf(const RandomWorld& world) {
  return "  configuration: " + writeFile("world.json", openConfigOf(world.configuration)) +
         "\n  events:        " + writeFile("world.events", eventLinesOf(world.events)) +
         "\n  chip capacity: " + std::to_string(world.chipCapacity) + '\n';
}

// A failure of the test that shows how little it takes.
void reportPacket(const RandomWorld& world, const Sent& sent) {
  const RandomWorld smallest = smallestThatDiffers(world, sent);
  const std::string verdicts = ComparedWorld(smallest).send(sent);
  ADD_FAILURE() << "a packet goes two ways\n"
                << filesOf(smallest) << "  by " << sent.interface << ", hex " << inHex(sent.packet)
                << '\n'
                << verdicts << ComparedWorld(smallest).explanation(sent);
}

// By the names of files.
using LeavingFiles = std::map<std::string, std::vector<CaptureFrame>>;

struct Leaving {
  LeavingFiles files;
  ReferenceCounters counters;
  std::uint64_t notIp = 0;
};

std::string fileOf(std::string interface) {
  std::replace(interface.begin(), interface.end(), '/', '_');
  return interface + ".pcap";
}

Leaving forwardByReference(ReferenceForwarder& reference,
                           const std::vector<RandomCapture>& captures) {
  Leaving leaving;
  for (const RandomArrival& arrival : inOrderOfTimes(captures)) {
    if (!arrival.packet) {
      ++leaving.notIp;
      continue;
    }
    const auto verdict = reference.forward(arrival.interface, *arrival.packet);
    if (!verdict.drop.empty()) continue;
    leaving.files[fileOf(verdict.egress)].push_back(
        {verdict.packet, arrival.frame.seconds, arrival.frame.nanoseconds});
  }
  leaving.counters = reference.counters();
  return leaving;
}

std::string shown(const std::vector<CaptureFrame>& frames, std::size_t at) {
  if (at >= frames.size()) return "nothing";
  const CaptureFrame& frame = frames[at];
  return std::to_string(frame.seconds) + " s " + std::to_string(frame.nanoseconds) + " ns " +
         inHex(frame.bytes);
}

// Empty where there is none.
std::string firstDifference(LeavingFiles binary, LeavingFiles wanted) {
  std::set<std::string> names;
  for (const LeavingFiles& files : {binary, wanted}) {
    for (const auto& [name, frames] : files)
      names.insert(name);
  }
  for (const std::string& name : names) {
    if (!binary.contains(name)) return name + " is missing";
    if (!wanted.contains(name)) return name + " should not be there";
    std::size_t at = 0;
    while (shown(binary[name], at) == shown(wanted[name], at)) {
      if (++at > wanted[name].size() + binary[name].size()) break;
    }
    if (binary[name] == wanted[name]) continue;
    return name + ", packet " + std::to_string(at) + "\n  agent:     " + shown(binary[name], at) +
           "\n  reference: " + shown(wanted[name], at) + '\n';
  }
  return "";
}

ReferenceCounters countersIn(const nlohmann::json& document) {
  const auto countIn = [](const nlohmann::json& entry) {
    return ReferenceCount{entry.at("packets"), entry.at("bytes")};
  };
  ReferenceCounters counters;
  for (const auto& entry : document.at("rules"))
    counters.rules[{entry.at("interface"), entry.at("policy"), entry.at("rule")}] = countIn(entry);
  for (const auto& entry : document.at("vrfs"))
    counters.vrfs[entry.at("vrfName")] = countIn(entry);
  for (const auto& entry : document.at("drops"))
    counters.drops[entry.at("reason")] = countIn(entry);
  return counters;
}

Leaving forwardByBinary(const RandomWorld& world, const std::vector<RandomCapture>& captures) {
  const auto in = emptyFolder("in");
  const auto out = emptyFolder("out");
  std::vector<std::string> arguments{"forward",
                                     writeFile("world.json", openConfigOf(world.configuration)),
                                     "--json",
                                     "--out",
                                     out,
                                     "--events",
                                     writeFile("world.events", eventLinesOf(world.events))};
  for (const RandomCapture& capture : captures) {
    const auto file = in / fileOf(capture.interface);
    std::vector<CaptureFrame> frames;
    for (const RandomArrival& arrival : capture.arrivals)
      frames.push_back(arrival.frame);
    writeCapture(file, capture.link, frames);
    arguments.insert(arguments.end(), {"--in", capture.interface + '=' + file.string()});
  }
  const AgentOutcome run = runAgent(arguments);
  EXPECT_EQ(run.status, 0) << run.err;
  Leaving leaving;
  for (const std::string& name : namesIn(out))
    leaving.files[name] = readRawIpCapture(out / name);
  const auto documents = run.documents();
  EXPECT_EQ(documents.size(), 1U);
  if (documents.empty()) return leaving;
  leaving.counters = countersIn(documents.front());
  leaving.notIp = documents.front().at("notIp");
  return leaving;
}

class RandomForwarding : public ::testing::Test {
 protected:
  Sent randomSent(RandomChoices& choices) {
    const std::string interface = choices.oneOf(ingressInterfaces());
    return {interface, randomPacket(choices)};
  }

  const RandomSeed seed_;
};

TEST_F(RandomForwarding, EveryPacketOfManyWorldsGoesTheWayOfTheReference) {
  SCOPED_TRACE(seed_.replay());
  std::set<std::string> reasons;
  for (unsigned index = 0; index < worlds && !HasFailure(); ++index) {
    SCOPED_TRACE("world " + std::to_string(index));
    RandomChoices choices = choicesOf(seed_, index);
    RandomWorld world = makeWorld(choices);
    if (index % 2 == 0) addMatches(choices, world.configuration);
    ComparedWorld compared(world);
    EXPECT_EQ(compared.disagreement(), "") << filesOf(world);
    for (unsigned count = 0; count < packetsOfAWorld && !HasFailure(); ++count) {
      const Sent sent = randomSent(choices);
      if (!compared.send(sent).empty()) reportPacket(world, sent);
    }
    if (HasFailure()) return;
    EXPECT_EQ(compared.compareCounters(), "") << filesOf(world);
    for (const auto& [reason, count] : compared.reference().counters().drops)
      reasons.insert(reason);
  }
  EXPECT_THAT(reasons,
              UnorderedElementsAre("malformed", "badChecksum", "discardedByRule", "noVrfResource",
                                   "noVrfId", "noRoute", "dropRoute", "decapDisabled", "notATunnel",
                                   "fragmentedTunnel", "innerMalformed", "congestion",
                                   "nestedDecap", "ttlExpired"));
}

TEST_F(RandomForwarding, CapturesOfManyWorldsLeaveTheBinaryAsTheReferenceSays) {
  SCOPED_TRACE(seed_.replay());
  for (unsigned index = 0; index < worldsOfCaptures && !HasFailure(); ++index) {
    SCOPED_TRACE("world " + std::to_string(index));
    RandomChoices choices = choicesOf(seed_, index);
    RandomWorld world = makeWorld(choices);
    world.chipCapacity = Limits::chipResources;
    const std::vector<RandomCapture> captures = randomCaptures(choices);
    ComparedWorld compared(world);
    EXPECT_EQ(compared.disagreement(), "") << filesOf(world);
    const Leaving wanted = forwardByReference(compared.reference(), captures);
    const Leaving binary = forwardByBinary(world, captures);
    EXPECT_EQ(binary.notIp, wanted.notIp) << filesOf(world);
    EXPECT_EQ(shown(binary.counters), shown(wanted.counters)) << filesOf(world);
    EXPECT_EQ(firstDifference(binary.files, wanted.files), "") << filesOf(world);
  }
}

}  // namespace
}  // namespace ZelAgent
