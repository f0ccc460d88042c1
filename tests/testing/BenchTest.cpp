// The bench of the conformance suite: its actions, and how it fills and empties a chip.
#include "testing/conformance/Bench.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "testing/Journal.h"
#include "testing/RecordingVrfHelper.h"
#include "testing/Shown.h"

namespace ZelVrfSelectionPolicy::Testing::Conformance {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

HwStatus refusal(FailureCode reason) {
  HwStatus status;
  status.statusIs(ProgrammingResult::programmingFailure);
  status.failureReasonIs(reason);
  return status;
}

// What a `ChipBehindAJournal` does and reports.
struct Behaviour {
  std::size_t room = 2;
  std::optional<std::size_t> capacity = std::nullopt;
  bool reportsUse = false;
  bool failsOnRequest = false;
};

// A chip that writes its calls into a journal, and has room for so many actions.
class ChipBehindAJournal final : public ChipUnderTest {
 public:
  ChipBehindAJournal(Journal& journal, const Behaviour& behaviour)
      : journal_(journal), behaviour_(behaviour) {}

  Mox::Ptr<VrfHelper> makeHelper(const ChipFacts& facts) override {
    const auto helper =
        Mox::makePtr<RecordingVrfHelper>(journal_, facts.fallbacks, facts.routes, facts.routes6);
    helper->onCreate = [this](const VrfAction& action) {
      if (failsNext_) return refusedOnce();
      if (held_.size() >= behaviour_.room) {
        return refusal(FailureCode::failureVrfResourceExhausted);
      }
      held_.insert(action);
      return HwStatus();
    };
    helper->onDelete = [this](const VrfAction& action) { held_.erase(VrfAction(action)); };
    return helper;
  }
  std::optional<std::size_t> resourcesInUse() const override {
    return behaviour_.reportsUse ? std::optional(held_.size()) : std::nullopt;
  }
  std::optional<std::size_t> capacity() const override { return behaviour_.capacity; }
  std::size_t mostCreations() const override { return 3; }
  bool failNextHook() override { return failsNext_ = behaviour_.failsOnRequest; }

 private:
  HwStatus refusedOnce() {
    failsNext_ = false;
    return refusal(FailureCode::failureVrfResourceAlloc);
  }

  Journal& journal_;
  Behaviour behaviour_;
  std::set<VrfAction> held_;
  bool failsNext_ = false;
};

std::unique_ptr<Bench> benchOf(Journal& journal, const Behaviour& behaviour) {
  return std::make_unique<Bench>(std::make_unique<ChipBehindAJournal>(journal, behaviour));
}

std::uint32_t idOf(const Bench& bench, const char* vrf) {
  return bench.facts().routes->vrfStatus(vrf)->vrfId();
}

template <class Make>
std::string refusalOf(const Make& make) {
  try {
    make();
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
  return "accepted";
}

class ChipWithoutHelper final : public ChipUnderTest {
 public:
  Mox::Ptr<VrfHelper> makeHelper(const ChipFacts& /*facts*/) override { return nullptr; }
};

TEST(BenchOfAChip, NeedsAChipAndItsHelper) {
  EXPECT_EQ(refusalOf([] { const Bench bench(nullptr); }), "there is no chip under test");
  EXPECT_EQ(refusalOf([] { const Bench bench(std::make_unique<ChipWithoutHelper>()); }),
            "makeHelper must return a helper, it returned null");
}

TEST(BenchOfAChip, GivesEachVrfOneHardwareId) {
  Journal journal;
  const auto bench = benchOf(journal, {});
  EXPECT_EQ(idOf(*bench, "red"), 1U);
  EXPECT_EQ(idOf(*bench, "blue"), 2U);
  EXPECT_EQ(idOf(*bench, "green"), 3U);
  EXPECT_EQ(idOf(*bench, "default"), 4U);
  EXPECT_EQ(shown(bench->plain("red")), "red");
  EXPECT_EQ(idOf(*bench, "red"), 1U);
  EXPECT_EQ(shown(bench->numbered(7)), "vrf-7");
  EXPECT_EQ(idOf(*bench, "vrf-7"), 5U);
  EXPECT_EQ(shown(bench->withoutId("red")), "red");
  EXPECT_EQ(bench->facts().routes->vrfStatus("red"), nullptr);
  EXPECT_EQ(shown(bench->decapsulating()), "red>blue>green:actionDecapVrf");
}

TEST(BenchOfAChip, FillsItUntilACreationIsRefusedAndEmptiesItAgain) {
  Journal journal;
  const auto bench = benchOf(journal, {});
  const Filling filling = bench->fill();
  EXPECT_THAT(journal.take(), ElementsAre("createVrf vrf-1", "createVrf vrf-2", "createVrf vrf-3"));
  EXPECT_THAT(filling.held, ElementsAre(bench->numbered(1), bench->numbered(2)));
  EXPECT_EQ(filling.refused, bench->numbered(3));
  EXPECT_EQ(filling.refusal, refusal(FailureCode::failureVrfResourceExhausted));
  bench->empty(filling);
  EXPECT_THAT(journal.take(), ElementsAre("deleteVrf vrf-3", "deleteVrf vrf-1", "deleteVrf vrf-2"));
}

TEST(BenchOfAChip, FillsItByOneCreationMoreThanItReportsToHold) {
  Journal journal;
  const auto bench = benchOf(journal, {.room = 9, .capacity = 1});
  const Filling filling = bench->fill();
  EXPECT_THAT(journal.take(), ElementsAre("createVrf vrf-1", "createVrf vrf-2"));
  EXPECT_FALSE(filling.refusal);
  bench->empty(filling);
  EXPECT_THAT(journal.take(), ElementsAre("deleteVrf vrf-1", "deleteVrf vrf-2"));
}

TEST(BenchOfAChip, FillsItByAsManyCreationsAsItMayTakeAtMost) {
  Journal journal;
  const auto bench = benchOf(journal, {.room = 9});
  EXPECT_EQ(bench->fill().held.size(), 3U);
}

TEST(BenchOfAChip, AsksForTheOccupancyOrFindsItByFilling) {
  Journal journal;
  std::ostringstream text;
  const auto reporting = benchOf(journal, {.reportsUse = true});
  static_cast<void>(reporting->create(reporting->plain("red")));
  text << reporting->occupancy() << '\n';
  EXPECT_THAT(journal.take(), ElementsAre("createVrf red"));
  const auto silent = benchOf(journal, {});
  static_cast<void>(silent->create(silent->plain("red")));
  text << silent->occupancy() << '\n';
  EXPECT_THAT(journal.take(), ElementsAre("createVrf red", "createVrf vrf-1", "createVrf vrf-2",
                                          "deleteVrf vrf-2", "deleteVrf vrf-1"));
  EXPECT_EQ(text.str(), "1 resources in use\n1 more actions that fit\n");
}

TEST(BenchOfAChip, ShowsAResultAsProgrammedOrAsItsFailure) {
  EXPECT_EQ(result(HwStatus()), "programmed");
  EXPECT_EQ(result(refusal(FailureCode::failureVrfResourceExhausted)),
            "programmingFailure failureVrfResourceExhausted ''");
}

// The outcomes whose description has `text`.
std::vector<Outcome> outcomesWith(const std::vector<Outcome>& outcomes, const std::string& text) {
  std::vector<Outcome> found;
  std::copy_if(outcomes.begin(), outcomes.end(), std::back_inserter(found),
               [&](const Outcome& outcome) { return outcome.of.find(text) != std::string::npos; });
  return found;
}

TEST(BenchOfAChip, CausesFailuresOfCreationsAndUpdatesInEachWay) {
  Journal journal;
  const auto bench = benchOf(journal, {.reportsUse = true, .failsOnRequest = true});
  const std::vector<Outcome> outcomes = bench->failureOutcomes();
  for (const char* const way : {" without a hardware id", " on a full chip"}) {
    const std::vector<Outcome> found = outcomesWith(outcomes, way);
    EXPECT_EQ(outcomesWith(found, "createVrf of ").size(), 7U) << way;
    EXPECT_EQ(outcomesWith(found, "updateVrf of ").size(), 7U) << way;
    EXPECT_EQ(outcomesWith(found, "tab\\there").size(), 2U) << way;
  }
  const std::vector<Outcome> refused = outcomesWith(outcomes, " that the hardware refuses");
  ASSERT_EQ(refused.size(), 2U);
  EXPECT_EQ(refused[0].status, refusal(FailureCode::failureVrfResourceAlloc));
  EXPECT_EQ(refused[1].status, HwStatus());
  EXPECT_EQ(outcomes.size(), 30U);
  EXPECT_EQ(outcomes.back().status, HwStatus());
  EXPECT_EQ(outcomesWith(outcomes, "createVrf of ").back().status,
            refusal(FailureCode::failureVrfResourceExhausted));
}

TEST(BenchOfAChip, DeletesEachActionWhoseFailureItCaused) {
  Journal journal;
  const auto bench = benchOf(journal, {.failsOnRequest = true});
  static_cast<void>(bench->failureOutcomes());
  std::set<std::string> created;
  for (const std::string& line : journal.take()) {
    const std::string action = line.substr(std::string("createVrf ").size());
    EXPECT_EQ(line.starts_with("createVrf "), !created.contains(action)) << line;
    created.insert(action);
    if (line.starts_with("deleteVrf ")) created.erase(action);
  }
  EXPECT_THAT(created, IsEmpty());
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing::Conformance
