// The agent keeps the promises of models/propagation.pml along the model's trails: after each event
// each used action is fresh, and none waits for room while there is room.
#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <string>

#include "agent/model/events/EventPlayer.h"
#include "agent/model/events/EventReader.h"
#include "agent/model/forwarding/ForwardingAgent.h"
#include "tests/agent/OpenConfigBuilder.h"
#include "tests/agent/model/trails/TrailFile.h"
#include "tests/files/TemporaryFolder.h"

namespace ZelAgent {
namespace {

using ZelVrfSelectionPolicy::FailureCode;
using ZelVrfSelectionPolicy::ProgrammingResult;

// What the promises say about one action. Empty if they are kept.
std::string brokenPromise(const ActionState& state, bool hasRoom) {
  const std::string vrf = state.action.vrfName().str();
  if (state.status.status() == ProgrammingResult::programmedInHw) {
    const bool isFresh = state.resource && state.resource->program == state.currentProgram;
    return isFresh ? "" : vrf + " is stale";
  }
  if (state.status.failureReason() == FailureCode::failureVrfResourceExhausted) {
    return hasRoom ? vrf + " waits for room, and there is room" : "";
  }
  const bool hasId = state.currentProgram.lookUp.front().vrfId != 0;
  return hasId ? vrf + " has an id, and is not programmed" : "";
}

std::string brokenPromise(const AgentState& state) {
  const bool hasRoom = state.chip.used < state.chip.capacity;
  for (const ActionState& action : state.actions) {
    if (action.users == 0) continue;
    if (std::string broken = brokenPromise(action, hasRoom); !broken.empty()) return broken;
  }
  return "";
}

// An agent with the VRFs of the model, in its first state.
class TrailAgent final {
 public:
  TrailAgent() { configure(); }

  void play(const std::string& line) {
    const std::vector<std::string> words = wordsOf(line);
    if (words[0] == "use") {
      used_.insert(words[1]);
      configure();
    } else if (words[0] == "unuse") {
      used_.erase(words[1]);
      configure();
    } else {
      static_cast<void>(player_.play(*readEvent(line)));
    }
  }

  [[nodiscard]] AgentState state() const { return agent_.state(); }

  [[nodiscard]] std::uint32_t id(const char* vrf) {
    return agent_.routeStatus().vrfStatus(L3::VrfName(vrf))->vrfId();
  }

 private:
  // A rule into each used VRF, on an interface of its own.
  void configure() {
    OpenConfigBuilder builder;
    for (const char* const vrf : {"red", "blue", "green"})
      builder.vrf(vrf);
    for (const std::string& vrf : used_) {
      const std::string name = vrf == defaultVrfName ? defaultInstanceName : vrf;
      builder.intf("DEFAULT", "to-" + vrf);
      builder.policy("to-" + vrf, {ruleOf(1, "", {}, toVrf(name))}, {"to-" + vrf});
    }
    const std::string file = folder_.path("trail.json");
    std::ofstream(file) << builder.text();
    static_cast<void>(player_.play(ApplyConfig{file}));
  }

  const TestFiles::TemporaryFolder folder_;
  ForwardingAgent agent_{1};
  EventPlayer player_{agent_, folder_.path()};
  std::set<std::string> used_;
};

void expectPromisesAlong(const Trail& trail) {
  TrailAgent agent;
  for (const std::string& line : trail) {
    agent.play(line);
    const std::string broken = brokenPromise(agent.state());
    EXPECT_EQ(broken, "") << "after \"" << line << "\" in:\n" << textOf(trail);
    if (!broken.empty()) return;
  }
}

void expectPromisesAlongTrailsOf(const std::string& file) {
  const std::vector<Trail> trails = trailsIn(file);
  EXPECT_GE(trails.size(), 8U) << file;
  for (const Trail& trail : trails)
    expectPromisesAlong(trail);
}

TEST(PropagationTrails, BeginWithTheIdsOfTheAgent) {
  TrailAgent agent;
  EXPECT_EQ(agent.id("default"), 1U);
  EXPECT_EQ(agent.id("red"), 2U);
  EXPECT_EQ(agent.id("blue"), 3U);
  EXPECT_EQ(agent.id("green"), 4U);
}

TEST(PropagationTrails, WhatWasRefusedIsAskedForAgainWhenRoomAppears) {
  expectPromisesAlongTrailsOf("not-asked-again.events");
}

TEST(PropagationTrails, FactsOfTheDefaultVrfReachEachActionThatFallsBackToIt) {
  expectPromisesAlongTrailsOf("default-vrf-facts.events");
}

TEST(PropagationTrails, PromisesHoldInRandomRunsOfTheModel) {
  expectPromisesAlongTrailsOf("random.events");
}

}  // namespace
}  // namespace ZelAgent
