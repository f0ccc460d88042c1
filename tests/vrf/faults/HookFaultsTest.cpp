#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <memory>

#include "testing/Shown.h"
#include "testing/TraceCapture.h"
#include "tests/vrf/faults/History.h"
#include "tests/vrf/faults/Statuses.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using Hook = FactsChip::Hook;

HwStatus failure(FailureCode reason, const std::string& description) {
  HwStatus status;
  status.statusIs(ProgrammingResult::programmingFailure);
  status.failureReasonIs(reason);
  status.failureDescriptionIs(description);
  return status;
}

struct Fault {
  FailureCode reason;
  const char* kind;
  std::string description;
};

std::vector<Fault> allFaults() {
  const std::string notPrintable("\0\n\r\t\x1b[2J\x7f\x80\xff'\\", 13);
  std::vector<Fault> all;
  for (const FailureCode reason : {FailureCode::failureNone, FailureCode::failureVrfResourceAlloc,
                                   FailureCode::failureVrfResourceExhausted}) {
    all.push_back({reason, "empty", ""});
    all.push_back({reason, "of 64 KiB", std::string(65536, 'd')});
    all.push_back({reason, "not printable", notPrintable});
  }
  return all;
}

std::string failedCreation(const FactsChip::Call& call) {
  return "ZelVrfSelection 5 /src/ZelVrfSelectionPolicy/ZelVrfSelectionPolicy:26 "
         "handleVrfRefCountChange ZelVrfSelectionPolicy::VrfSm::handleVrfRefCountChange: Failed to "
         "create VRF:" +
         call.action.vrfName().str() +
         ". Error:" + stringValue(call.outcome->failureReason()).str();
}

bool isOfAFailedCreation(const std::string& line) {
  return line.find("Failed to create") != std::string::npos;
}

/// A world with the facts and the users of another, in which everything is programmed at once.
std::unique_ptr<World> fromScratch(const World& other) {
  auto world = std::make_unique<World>();
  const auto copyRoutes = [](const auto& from, auto& to) {
    for (auto entry = from.vrfStatus().iterator(); entry; ++entry)
      to.vrfStatusIs(entry.key())->vrfIdIs(entry.value()->vrfId());
    for (auto entry = from.vrfPrefixLensInExactMatch().iterator(); entry; ++entry) {
      const auto lens = to.vrfPrefixLensInExactMatchIs(entry.key());
      for (unsigned char length = 0; length <= lens->longest; ++length) {
        if (entry.value()->prefixLenHas(length)) lens->prefixLenIs(length);
      }
    }
    to.decapNhEnabledIs(from.decapNhEnabled());
    to.decapNhFallbackEnabledIs(from.decapNhFallbackEnabled());
  };
  copyRoutes(*other.routes, *world->routes);
  copyRoutes(*other.routes6, *world->routes6);
  const auto& fallbacks = other.fallbacks[0]->fallbackVrf();
  for (auto entry = fallbacks.iterator(); entry; ++entry)
    world->fallbacks[0]->fallbackVrfIs(entry.key(), entry.value());
  world->build();
  for (auto entry = other.statuses->hwStatus().iterator(); entry; ++entry) {
    const unsigned users = other.users->vrfRefCount(entry.key());
    if (users == 0) {
      world->top->vrfSm()->updateVrfAction(entry.key());
    } else {
      world->users->vrfRefCountIs(entry.key(), 1);
      world->users->vrfRefCountIs(entry.key(), users);
    }
  }
  return world;
}

class HookFaults : public ::testing::Test {
 protected:
  HookFaults() : steps(historyOfHooks()) {
    World twin;
    for (const Step& step : steps)
      step.work(twin);
    hookCalls = static_cast<unsigned>(twin.chip->takeCalls().size());
    twin.refresh();
    expected = twin.dump();
  }

  ~HookFaults() override { Mox::traceLevelsIs("ZelVrfSelection=0"); }

  // The whole history, in the course of which `length` calls after `further` others fail.
  void run(unsigned further, unsigned length, const Fault& fault) {
    World world;
    Statuses statuses;
    Journal trace;
    const TraceCapture capture(trace, "ZelVrfSelection=5");
    world.chip->failAfter(further, length, failure(fault.reason, fault.description));
    for (const Step& step : steps) {
      SCOPED_TRACE(step.name);
      step.work(world);
      const std::vector<FactsChip::Call> calls = world.chip->takeCalls();
      statuses.follow(calls);
      ASSERT_EQ(statuses.differenceFrom(*world.statuses), "");
      ASSERT_EQ(world.brokenInvariants(), "");
      expectMessages(calls, trace.take());
    }
    injected += world.chip->faults();
    world.chip->faultsWithdrawn();
    world.refresh();
    ASSERT_EQ(world.dump(), expected);
  }

  // A message for each failed creation and none for a failed update; the description is in none.
  static void expectMessages(const std::vector<FactsChip::Call>& calls,
                             std::vector<std::string> lines) {
    std::vector<std::string> wanted;
    for (const FactsChip::Call& call : calls) {
      if (call.hook == Hook::create && call.outcome->status() != ProgrammingResult::programmedInHw)
        wanted.push_back(failedCreation(call));
    }
    for (const std::string& line : lines) {
      EXPECT_TRUE(std::ranges::all_of(line, [](char byte) { return byte >= ' ' && byte <= '~'; }));
      EXPECT_LT(line.size(), 500U);
    }
    std::erase_if(lines, [](const std::string& line) { return !isOfAFailedCreation(line); });
    EXPECT_EQ(lines, wanted);
  }

  void report(const std::string& what) const {
    RecordProperty(what, static_cast<int>(injected));
    std::cout << "injected " << what << ": " << injected << " in " << hookCalls
              << " hook calls of a history of " << steps.size() << " steps\n";
  }

  std::vector<Step> steps;
  unsigned hookCalls = 0;
  std::string expected;
  std::size_t injected = 0;
};

TEST_F(HookFaults, EachCallFailsInTurnWithEveryReasonAndIsMendedByTheNextEvent) {
  for (const Fault& fault : allFaults()) {
    SCOPED_TRACE(stringValue(fault.reason).str() + ", description " + fault.kind);
    const std::size_t before = injected;
    for (unsigned further = 0; further < hookCalls && !HasFatalFailure(); ++further) {
      SCOPED_TRACE("call " + std::to_string(further));
      run(further, 1, fault);
    }
    std::cout << "failed with " << stringValue(fault.reason) << ", description " << fault.kind
              << ": " << injected - before << '\n';
    EXPECT_GT(injected - before, 0U);
  }
  report("single hook failures");
}

TEST_F(HookFaults, CallsFailInBurstsAndAreMendedByTheNextEvent) {
  const std::vector<Fault> faults = allFaults();
  for (const unsigned length : {2U, 3U, 8U}) {
    for (unsigned further = 0; further < hookCalls && !HasFatalFailure(); ++further) {
      SCOPED_TRACE(std::to_string(length) + " calls from " + std::to_string(further));
      run(further, length, faults[(further + length) % faults.size()]);
    }
  }
  EXPECT_GT(injected, hookCalls * 12U);
  report("hook failures in bursts");
}

TEST_F(HookFaults, AllCallsFailAndAreMendedByTheNextEvent) {
  run(0, 1000000, {FailureCode::failureVrfResourceExhausted, "plain", "the table is full"});
  report("hook failures without end");
}

TEST_F(HookFaults, WhatHappenedEqualsWhatIsProgrammedFromScratch) {
  for (unsigned further = 0; further < hookCalls && !HasFatalFailure(); further += 7) {
    SCOPED_TRACE("call " + std::to_string(further));
    World world;
    world.chip->failAfter(further, 3, failure(FailureCode::failureVrfResourceAlloc, "refused"));
    for (const Step& step : steps)
      step.work(world);
    injected += world.chip->faults();
    world.chip->faultsWithdrawn();
    world.refresh();
    const auto scratch = fromScratch(world);
    scratch->refresh();
    ASSERT_EQ(world.dump(), scratch->dump());
  }
  report("hook failures before a comparison with a world from scratch");
}

TEST_F(HookFaults, NameThatIsNotPrintableLeavesTheTraceOnOneLine) {
  World world;
  world.build();
  Journal trace;
  const TraceCapture capture(trace, "ZelVrfSelection=5");
  world.chip->failAfter(0, 1, failure(FailureCode::failureVrfResourceAlloc, "\x1b[2J\n"));
  const VrfAction action(std::string("a\n\x1b[2J\0b", 8), PolicyMap::ActionType::vrf);
  world.users->vrfRefCountIs(action, 1);
  std::vector<std::string> lines = trace.take();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_TRUE(lines[0].ends_with("Failed to create VRF:a??[2J?b. Error:failureVrfResourceAlloc"));
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
