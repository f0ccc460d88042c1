// Whatever has happened, the chip holds what a new chip would make, from scratch, of the actions
// and facts that there are now.
//
// For most events that is so at once. For those that the state machine does not act on, or not for
// all that depends on them, it is so after the next event that has everything programmed anew. They
// are left out of the first kind of history; below, each has a test of its own:
//
//   - an id that goes back to 0;
//   - a status that brings its id along when it is added;
//   - a status replaced by one without an id;
//   - prefix lengths replaced by another entity under the same name;
//   - the id of the default VRF;
//   - any fact of the default VRF as a fallback: no record is kept of who falls back to it.
//
// ZEL_TEST_SEED replays a seed. A history that fails is shown without the steps that it fails
// without.
#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <sstream>

#include "testing/RandomRounds.h"
#include "testing/RandomSeed.h"
#include "tests/chips/soft/ChipWorld.h"

namespace Chips {
namespace {

using PolicyMap::ActionType;
using ZelVrfSelectionPolicy::VrfAction;
using ZelVrfSelectionPolicy::Testing::randomRounds;
using ZelVrfSelectionPolicy::Testing::RandomSeed;

constexpr std::size_t histories = 250;
constexpr int stepsPerHistory = 500;

using Steps = std::vector<Step>;

struct History {
  Steps before;  // the state machine is built
  Steps after;
};

const L3::VrfName defaultVrf("default");
const std::vector<L3::VrfName> otherVrfs = {"a", "b", "c", "d", "e"};

// Makes histories; the same seed makes the same ones.
class HistoryMaker final {
 public:
  enum class Events : std::uint8_t { propagatedAtOnce, all };

  HistoryMaker(std::uint32_t seed, Events events) : random_(seed), events_(events) {}

  History make() {
    makeActions();
    History history;
    history.before.push_back({StepKind::addStatus, defaultVrf, {}, {}, 1, false});
    const unsigned facts = below(20);
    while (history.before.size() <= facts)
      history.before.push_back(fact());
    while (history.after.size() < stepsPerHistory)
      history.after.push_back(below(3) == 0 ? user() : fact());
    return history;
  }

 private:
  unsigned below(unsigned end) {
    return std::uniform_int_distribution<unsigned>(0, end - 1)(random_);
  }
  bool anyFlag() { return below(2) == 0; }
  [[nodiscard]] bool all() const { return events_ == Events::all; }

  L3::VrfName otherVrf() { return otherVrfs[below(static_cast<unsigned>(otherVrfs.size()))]; }
  L3::VrfName anyVrf() { return below(6) == 0 ? defaultVrf : otherVrf(); }
  // A VRF whose status may change.
  L3::VrfName changingVrf() { return all() ? anyVrf() : otherVrf(); }
  std::uint32_t anyId() { return below(4) + (all() ? 0 : 1); }

  void makeActions() {
    actions_.clear();
    for (int i = 0; i < 4; ++i)
      actions_.emplace_back(anyVrf(), ActionType::vrf);
    for (int i = 0; i < 4; ++i) {
      VrfAction action(anyVrf(), ActionType::decapVrf);
      action.fallbackVrfNameIs(anyVrf());
      action.postDecapVrfNameIs(anyVrf());
      actions_.push_back(action);
    }
  }

  Step user() {
    Step step;
    step.kind = below(5) < 3 ? StepKind::addUser : StepKind::removeUser;
    step.action = actions_[below(static_cast<unsigned>(actions_.size()))];
    return step;
  }

  Step fact() {
    switch (below(all() ? 10 : 9)) {
      case 0:
      case 1:
      case 2:
        return status();
      case 3:
      case 4:
      case 5:
        return fallback();
      case 6:
      case 7:
        return lengths();
      case 8:
        return {anyFlag() ? StepKind::setDecapNh : StepKind::setDecapNhFallback,
                {},
                {},
                {},
                0,
                anyFlag()};
      default:
        return chip();
    }
  }

  Step status() {
    switch (below(5)) {
      case 0:
        return {StepKind::addStatus, changingVrf(), {}, {}, all() ? anyId() : 0, false};
      case 1:
        return {StepKind::removeStatus, changingVrf(), {}, {}, 0, false};
      case 2:
        return {StepKind::replaceStatus, changingVrf(), {}, {}, anyId(), false};
      default:
        return {StepKind::setId, changingVrf(), {}, {}, anyId(), false};
    }
  }

  Step fallback() {
    switch (below(20)) {
      case 0:
        return {StepKind::removeFallbacks, {}, {}, {}, 0, false};
      case 1:
      case 2:
      case 3:
      case 4:
      case 5:
        return {StepKind::removeFallback, anyVrf(), {}, {}, 0, false};
      default:
        return {StepKind::setFallback, anyVrf(), changingVrf(), {}, 0, false};
    }
  }

  Step lengths() {
    constexpr StepKind kinds[] = {StepKind::addLengths,   StepKind::removeLengths,
                                  StepKind::addLength,    StepKind::addLength,
                                  StepKind::removeLength, StepKind::replaceLengths};
    return {kinds[below(all() ? 6 : 5)], anyVrf(), {}, {}, below(4), anyFlag()};
  }

  Step chip() {
    if (anyFlag()) return {StepKind::planFaults, {}, {}, {}, below(3), false};
    return {StepKind::setCapacity, {}, {}, {}, below(6), false};
  }

  std::mt19937 random_;
  Events events_;
  std::vector<VrfAction> actions_;
};

// What is wrong with a history; nothing where all is well.
using Check = std::function<std::optional<std::string>(const History&)>;

std::optional<std::string> differenceAtAnyStep(const History& history) {
  ChipWorld world(history.before);
  for (const Step& step : history.after) {
    world.take(step);
    if (auto difference = world.difference()) return difference;
  }
  return std::nullopt;
}

// The chip has room again and no faults; then one flag changes.
void programAllAnew(ChipWorld& world) {
  world.take({StepKind::setCapacity, {}, {}, {}, ChipWorld::enoughCapacity, false});
  world.take({StepKind::planFaults, {}, {}, {}, 0, false});
  world.take({StepKind::setDecapNh, {}, {}, {}, 0, false});
  world.take({StepKind::setDecapNh, {}, {}, {}, 0, true});
}

std::optional<std::string> differenceAtTheEnd(const History& history) {
  ChipWorld world(history.before);
  for (const Step& step : history.after)
    world.take(step);
  programAllAnew(world);
  return world.difference();
}

// Without any one of its steps the history would pass.
void shrink(Steps History::*part, History& history, const Check& check) {
  for (std::size_t i = (history.*part).size(); i-- > 0;) {
    History shorter = history;
    (shorter.*part).erase((shorter.*part).begin() + static_cast<std::ptrdiff_t>(i));
    if (check(shorter)) history = std::move(shorter);
  }
}

std::string explain(History history, const Check& check) {
  shrink(&History::after, history, check);
  shrink(&History::before, history, check);
  std::ostringstream text;
  for (const Step& step : history.before)
    text << "  before: " << step << '\n';
  for (const Step& step : history.after)
    text << "  then:   " << step << '\n';
  text << check(history).value_or("this passes");
  return text.str();
}

void checkHistories(HistoryMaker::Events events, const Check& check) {
  const RandomSeed seed;
  HistoryMaker maker(seed.value(), events);
  for (std::size_t i = 0; i < randomRounds(histories); ++i) {
    const History history = maker.make();
    if (!check(history)) continue;
    FAIL() << "history " << i << "; " << seed.replay() << '\n' << explain(history, check);
  }
}

TEST(ProgrammedFromScratch, AfterEachEventThatIsPropagatedAtOnce) {
  checkHistories(HistoryMaker::Events::propagatedAtOnce, differenceAtAnyStep);
}

TEST(ProgrammedFromScratch, AfterAnyEventsOnceEverythingIsProgrammedAnew) {
  checkHistories(HistoryMaker::Events::all, differenceAtTheEnd);
}

// A chip that is right, an event after which it is not, and everything programmed anew.
class NotPropagated : public ::testing::Test {
 protected:
  NotPropagated() {
    take({StepKind::addStatus, "a", {}, {}, 0, false});
    take({StepKind::setId, "a", {}, {}, 1, false});
    take({StepKind::addLengths, "a", {}, {}, 24, false});
    take({StepKind::addUser, {}, {}, VrfAction("a", ActionType::vrf), 0, false});
  }
  void take(const Step& step) { world_.take(step); }
  void expectMissed(const Step& step) {
    EXPECT_EQ(world_.difference(), std::nullopt);
    take(step);
    EXPECT_NE(world_.difference(), std::nullopt);
    programAllAnew(world_);
    EXPECT_EQ(world_.difference(), std::nullopt);
  }

  ChipWorld world_{{{StepKind::addStatus, defaultVrf, {}, {}, 1, false}}};
};

TEST_F(NotPropagated, AnIdThatGoesBackToZero) {
  expectMissed({StepKind::setId, "a", {}, {}, 0, false});
}

TEST_F(NotPropagated, AnIdThatAStatusBringsAlong) {
  take({StepKind::removeStatus, "a", {}, {}, 0, false});
  expectMissed({StepKind::addStatus, "a", {}, {}, 7, false});
}

TEST_F(NotPropagated, AStatusReplacedByOneWithoutAnId) {
  expectMissed({StepKind::replaceStatus, "a", {}, {}, 0, false});
}

TEST_F(NotPropagated, PrefixLengthsReplacedByAnotherEntity) {
  expectMissed({StepKind::replaceLengths, "a", {}, {}, 32, false});
}

TEST_F(NotPropagated, TheIdOfTheDefaultVrf) {
  take({StepKind::addUser, {}, {}, VrfAction(defaultVrf, ActionType::vrf), 0, false});
  expectMissed({StepKind::setId, defaultVrf, {}, {}, 2, false});
}

TEST_F(NotPropagated, PrefixLengthsOfTheDefaultVrfAsAFallback) {
  take({StepKind::setFallback, "a", defaultVrf, {}, 0, false});
  expectMissed({StepKind::addLengths, defaultVrf, {}, {}, 8, false});
}

TEST_F(NotPropagated, TheEndOfTheDefaultVrfAsAFallback) {
  take({StepKind::setFallback, "a", defaultVrf, {}, 0, false});
  expectMissed({StepKind::removeStatus, defaultVrf, {}, {}, 0, false});
}

}  // namespace
}  // namespace Chips
