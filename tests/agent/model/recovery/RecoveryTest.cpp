// After any history of faults an agent recovers by itself.
//
// A history has configurations and events, planned faults, a chip that shrinks and grows, and VRFs
// that get an id late or lose it. After every event and every configuration no resource is stale,
// unless the chip refused the last update. Then the faults end: there is room, no planned fault is
// left, and every VRF has an id. From then on nothing changes and nobody asks, but steps are made,
// as by the timer of a daemon. After at most `pauseSteps` + 1 steps every used action is
// programmed by the current facts. In these steps the chip gets exactly one hook call for each
// action that was refused or stale when the faults ended.
#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <set>
#include <string>

#include "agent/config/OpenConfigReader.h"
#include "agent/language/Errors.h"
#include "agent/language/Limits.h"
#include "agent/model/events/EventPlayer.h"
#include "agent/model/forwarding/ForwardingAgent.h"
#include "agent/reports/StateReport.h"
#include "testing/RandomRounds.h"
#include "testing/RandomSeed.h"
#include "tests/agent/model/fresh/History.h"

namespace ZelAgent {
namespace {

using ZelVrfSelectionPolicy::HwStatus;
using ZelVrfSelectionPolicy::ProgrammingResult;
using ZelVrfSelectionPolicy::Testing::randomRounds;
using ZelVrfSelectionPolicy::Testing::RandomSeed;

constexpr std::size_t recoveriesByDefault = 25;

struct Recovery {
  std::size_t actions = 0;  // that are refused or stale when the faults end
  std::uint64_t steps = 0;
  std::uint64_t hookCalls = 0;
};

// The system during a history of faults and afterwards.
class FaultyAgent final {
 public:
  explicit FaultyAgent(RandomChoices& choices) : choices_(choices) {}

  // Returns what is wrong; empty if nothing is.
  [[nodiscard]] std::string failDuring(const History& history) {
    configure(history.start);
    for (const Step& step : history.steps) {
      std::visit([this](const auto& action) { play(action); }, step);
      addFault();
      if (!wrong_.empty()) return wrong_;
    }
    return wrong_;
  }

  // The faults end, and nothing else happens: no event is played and no step is made.
  void endFaults() {
    agent_.chip().capacityIs(roomyChip);
    agent_.chip().faultPlan().anyFaultsIs(0);
    for (const L3::VrfName& vrf : vrfsOfActions()) {
      agent_.chip().faultPlan().vrfFaultsIs(vrf, 0);
      const auto status = agent_.routeStatus().vrfStatusIs(vrf);
      if (status->vrfId() == 0) status->vrfIdIs(nextId_++);
    }
  }

  // Only steps.
  [[nodiscard]] std::string recover(Recovery& recovery) {
    constexpr std::uint64_t mostSteps = Limits::pauseSteps + 1;
    recovery.actions = actionsToRecover();
    const std::uint64_t callsBefore = hookCalls();
    for (; !wrongAction().empty(); ++recovery.steps) {
      if (recovery.steps == mostSteps) {
        return "not recovered after " + std::to_string(mostSteps) + " steps: " + wrongAction();
      }
      agent_.complete();
    }
    recovery.hookCalls = hookCalls() - callsBefore;
    if (recovery.hookCalls != recovery.actions) {
      return std::to_string(recovery.hookCalls) + " hook calls for " +
             std::to_string(recovery.actions) + " actions";
    }
    return agent_.isRecovering() ? "recovers from nothing" : "";
  }

 private:
  void play(const Event& event) {
    try {
      (void)EventPlayer(agent_, "").play(event);
    } catch (const EventError&) {
      return;  // the event did not fit to the state
    }
    if (wrong_.empty() && !std::holds_alternative<Show>(event)) {
      wrong_ = staleAction();
      if (!wrong_.empty()) wrong_ += " after " + toText(event);
    }
  }
  void play(const Reload& reload) { configure(reload.document); }
  void play(const Configure& configuration) { configure(configuration.document); }
  // Recoveries come at the end, and rules have room.
  void play(const SetRuleCapacity&) {}
  void play(const Recover&) {}

  void configure(const std::string& document) {
    try {
      agent_.apply(readOpenConfig(document, "document").configuration);
    } catch (const ConfigError&) {
      return;
    }
    if (wrong_.empty()) wrong_ = staleAction();
  }

  void addFault() {
    if (choices_.percent(30)) play(Event(PlanChipFaults{{}, choices_.below(60)}));
    if (choices_.percent(30)) play(Event(SetChipCapacity{choices_.below(6)}));
    if (choices_.percent(20)) play(Event(SetVrfId{"red", 0}));
    for (unsigned steps = choices_.percent(30) ? choices_.below(40) : 0; steps > 0; --steps)
      agent_.complete();
  }

  [[nodiscard]] std::uint64_t hookCalls() {
    const Chips::HookCounts& counts = agent_.chip().hookCounts();
    return counts.creates + counts.updates + counts.deletes;
  }

  [[nodiscard]] std::size_t actionsToRecover() {
    const auto statuses = agent_.statuses();
    return static_cast<std::size_t>(
        std::count_if(statuses.begin(), statuses.end(), [this](const auto& entry) {
          return isRefused(entry.second) || agent_.chip().isOutOfDate(entry.first);
        }));
  }
  [[nodiscard]] static bool isRefused(const HwStatus& status) {
    return status.status() == ProgrammingResult::programmingFailure;
  }

  [[nodiscard]] std::set<L3::VrfName> vrfsOfActions() {
    std::set<L3::VrfName> vrfs;
    for (const auto& [action, status] : agent_.statuses()) {
      for (const L3::VrfName& vrf :
           {action.vrfName(), action.fallbackVrfName(), action.postDecapVrfName()}) {
        if (!vrf.empty()) vrfs.insert(vrf);
      }
    }
    return vrfs;
  }

  // An action that is shown as programmed and is not; empty if there is none.
  [[nodiscard]] std::string staleAction() {
    for (const auto& [action, status] : agent_.statuses()) {
      if (isRefused(status)) continue;
      const Chips::VrfResource* const resource = agent_.chip().resource(action);
      if (resource == nullptr) return "without a resource: " + toText(action);
      if (resource->program != agent_.chip().currentProgram(action)) {
        return "stale: " + toText(action);
      }
    }
    return "";
  }

  // An action that is not programmed by the current facts; empty if there is none.
  [[nodiscard]] std::string wrongAction() {
    for (const auto& [action, status] : agent_.statuses()) {
      if (isRefused(status)) return toText(action) + ": " + status.failureDescription().str();
    }
    return staleAction();
  }

  RandomChoices& choices_;
  ForwardingAgent agent_{roomyChip};
  std::uint32_t nextId_ = 100;
  std::string wrong_;
};

TEST(RecoveryFromFaults, IsCompleteAfterManyHistoriesAndABoundedNumberOfStepsAndHookCalls) {
  const RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  RandomChoices choices(seed.value());
  Recovery longest;
  for (std::size_t round = 0; round < randomRounds(recoveriesByDefault); ++round) {
    SCOPED_TRACE("history " + std::to_string(round));
    const History history = randomHistory(choices);
    FaultyAgent agent(choices);
    Recovery recovery;
    ASSERT_EQ(agent.failDuring(history), "") << textOf(history);
    agent.endFaults();
    ASSERT_EQ(agent.recover(recovery), "") << textOf(history);
    longest.actions = std::max(longest.actions, recovery.actions);
    longest.steps = std::max(longest.steps, recovery.steps);
    longest.hookCalls = std::max(longest.hookCalls, recovery.hookCalls);
  }
  std::cout << "longest recovery: " << longest.steps << " steps, " << longest.hookCalls
            << " hook calls, " << longest.actions << " actions\n";
}

}  // namespace
}  // namespace ZelAgent
