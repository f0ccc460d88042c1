// From the call of `deleteVrf` on, an action is not updated by anything, whoever asks for it and
// when. Other actions are, and so is the action itself when it was created again.

#include <algorithm>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "testing/Shown.h"
#include "tests/vrf/FrameFixture.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

/// Calls `work` once, when a table says that red has gone.
template <class Table>
class WhenRedGoes {
 public:
  WhenRedGoes(const Mox::Ptr<Table>& table, std::function<void()> work)
      : table_(table), work_(std::move(work)), subscriber_(*this) {
    subscriber_.dispatch = [](Velo::Publisher*, Velo::Subscriber* subscriber, short,
                              const void* key, const void* value) {
      WhenRedGoes& self = Velo::MemberSubscriber<WhenRedGoes>::ownerOf(subscriber);
      if (value != nullptr || shown(*static_cast<const VrfAction*>(key)) != "red") return;
      if (const auto now = std::exchange(self.work_, nullptr)) now();
    };
    table_->publisher().subscriberIs(subscriber_);
  }
  WhenRedGoes(const WhenRedGoes&) = delete;
  WhenRedGoes& operator=(const WhenRedGoes&) = delete;
  ~WhenRedGoes() { table_->publisher().subscriberDel(subscriber_); }

 private:
  Mox::Ptr<Table> table_;
  std::function<void()> work_;
  Velo::MemberSubscriber<WhenRedGoes> subscriber_;
};

/// When in the course of a removal something happens.
enum class UpdateMoment {
  hook,
  countGoesBefore,
  countGoesAfter,
  statusGoesBefore,
  statusGoesAfter
};

// Red, and green whose action falls back to red, have resources. Two machines are at work.
class UpdatesDuringRemoval : public VrfSmFrameFixture {
 public:
  void changeLengths() {
    routes->vrfPrefixLensInExactMatch("red")->prefixLenIs(++length_);
    routes6->vrfPrefixLensInExactMatch("red")->prefixLenIs(++length_);
  }
  [[nodiscard]] const std::vector<Mox::Ptr<VrfSm>>& machines() const { return machines_; }

  using VrfSmFrameFixture::fallback;
  using VrfSmFrameFixture::red;
  using VrfSmFrameFixture::routes;

 protected:
  static constexpr const char* ofOneOfAll =
      "ZelVrfSelectionPolicy::VrfSm::updateAllVrfActions: Updating";
  static constexpr const char* ofOne = "ZelVrfSelectionPolicy::VrfSm::updateVrfAction: Updating";
  static constexpr const char* ofDecap = "VrfSm::handleDecapNh action:";

  UpdatesDuringRemoval() { green_.fallbackVrfNameIs("red"); }

  void build() {
    routes->vrfStatusIs("red")->vrfIdIs(1);
    routes->vrfPrefixLensInExactMatchIs("red");
    routes6->vrfPrefixLensInExactMatchIs("red");
    machines_ = {newVrfSm(), newVrfSm()};
  }
  void createBoth() {
    users->vrfRefCountIs(red, 1);
    users->vrfRefCountIs(green_, 1);
    numberUpdates();
    journalTrace();
    journalTables();
    forgetLines();
  }

  static auto times(const Lines& lines, std::string_view text) {
    return std::ranges::count_if(
        lines, [&](const std::string& line) { return line.find(text) != line.npos; });
  }
  static auto whole(const Lines& lines, const std::string& line) {
    return std::ranges::count(lines, line);
  }

  VrfAction green_ = lookUpIn("green");

 private:
  std::vector<Mox::Ptr<VrfSm>> machines_;
  unsigned char length_ = 0;
};

/// Something by which red would be updated, and whether green is.
struct Event {
  const char* name;
  void (*happen)(UpdatesDuringRemoval& test);
  bool reachesGreen;

  friend std::ostream& operator<<(std::ostream& out, const Event& event) {
    return out << event.name;
  }
};

void ofEach(const UpdatesDuringRemoval& test, void (*work)(VrfSm& machine)) {
  for (const Mox::Ptr<VrfSm>& machine : test.machines())
    work(*machine);
}

const Event events[] = {
    {"UpdateOfTheAction",
     [](UpdatesDuringRemoval& test) {
       for (const Mox::Ptr<VrfSm>& machine : test.machines())
         machine->updateVrfAction(test.red);
     },
     false},
    {"UpdateOfAllThatNameTheVrf",
     [](UpdatesDuringRemoval& test) {
       ofEach(test, [](VrfSm& machine) { machine.updateAllVrfActions("red"); });
     },
     true},
    {"UpdateOfTheVrf",
     [](UpdatesDuringRemoval& test) {
       ofEach(test, [](VrfSm& machine) { machine.handleVrfUpdates("red", false); });
     },
     true},
    {"UpdateForFallback",
     [](UpdatesDuringRemoval& test) {
       ofEach(test, [](VrfSm& machine) { machine.handleVrfFallbackConfig("red"); });
     },
     true},
    {"DecapHandler",
     [](UpdatesDuringRemoval& test) {
       ofEach(test, [](VrfSm& machine) { machine.handleDecapNh(); });
     },
     true},
    {"DecapFallbackHandler",
     [](UpdatesDuringRemoval& test) {
       ofEach(test, [](VrfSm& machine) { machine.handleDecapNhFallback(); });
     },
     true},
    {"VrfId",
     [](UpdatesDuringRemoval& test) {
       const auto vrf = test.routes->vrfStatus("red");
       vrf->vrfIdIs(vrf->vrfId() + 1);
     },
     true},
    {"Lengths", [](UpdatesDuringRemoval& test) { test.changeLengths(); }, true},
    {"Fallback", [](UpdatesDuringRemoval& test) { test.fallback->fallbackVrfIs("red", "blue"); },
     true},
    {"DecapFlag",
     [](UpdatesDuringRemoval& test) {
       test.routes->decapNhEnabledIs(!test.routes->decapNhEnabled());
     },
     true},
    {"DecapFallbackFlag",
     [](UpdatesDuringRemoval& test) {
       test.routes->decapNhFallbackEnabledIs(!test.routes->decapNhFallbackEnabled());
     },
     true},
};

class ARemoval : public UpdatesDuringRemoval,
                 public ::testing::WithParamInterface<std::tuple<Event, UpdateMoment>> {
 protected:
  [[nodiscard]] static const Event& event() { return std::get<Event>(GetParam()); }
  [[nodiscard]] static bool isAt(UpdateMoment moment) {
    return std::get<UpdateMoment>(GetParam()) == moment;
  }

  void SetUp() override {
    if (isAt(UpdateMoment::countGoesBefore)) ofUsers_.emplace(users, [this] { happen(); });
    if (isAt(UpdateMoment::statusGoesBefore)) ofStatuses_.emplace(statuses, [this] { happen(); });
    build();
    if (isAt(UpdateMoment::countGoesAfter)) ofUsers_.emplace(users, [this] { happen(); });
    if (isAt(UpdateMoment::statusGoesAfter)) ofStatuses_.emplace(statuses, [this] { happen(); });
    createBoth();
    if (isAt(UpdateMoment::hook)) chip->onDelete = [this](const VrfAction&) { happen(); };
  }
  void happen() {
    hasHappened = true;
    event().happen(*this);
  }

  void expectNoUpdateOfRed(const Lines& lines) const {
    EXPECT_EQ(whole(lines, "updateVrf red"), 0);
    EXPECT_EQ(times(lines, "hwStatus red ="), 0);
    EXPECT_EQ(whole(lines, "deleteVrf red"), 1);
    // Each message of an update belongs to one of green.
    const auto updates = whole(lines, "updateVrf " + shown(green_));
    EXPECT_EQ(updates > 0, event().reachesGreen);
    EXPECT_EQ(times(lines, ofOneOfAll) + times(lines, ofOne), updates);
    EXPECT_EQ(times(lines, ofDecap), times(lines, "VrfSm::handleDecapNh decapNhEnabled:"));
    EXPECT_FALSE(statuses->hwStatusHas(red));
    EXPECT_FALSE(users->vrfRefCount().has(red));
  }

  bool hasHappened = false;

 private:
  std::optional<WhenRedGoes<VrfHwConfig>> ofUsers_;
  std::optional<WhenRedGoes<VrfHwStatus>> ofStatuses_;
};

TEST_P(ARemoval, LetsNothingUpdateItsAction) {
  users->vrfRefCountIs(red, 0);
  ASSERT_TRUE(hasHappened);
  expectNoUpdateOfRed(journal.take());
}

TEST_P(ARemoval, IsFollowedByACreationAfterWhichTheActionIsUpdatedAsAnyOther) {
  users->vrfRefCountIs(red, 0);
  ASSERT_TRUE(hasHappened);
  chip->onDelete = nullptr;
  users->vrfRefCountIs(red, 1);
  forgetLines();
  machines().front()->updateVrfAction(red);
  EXPECT_EQ(whole(journal.lines(), "updateVrf red"), 1);
  EXPECT_EQ(times(journal.lines(), ofOne), 1);
  EXPECT_EQ(times(journal.take(), "hwStatus red ="), 1);
  fallback->fallbackVrfDelAll();
  forgetLines();
  event().happen(*this);
  const Lines lines = journal.take();
  EXPECT_GE(whole(lines, "updateVrf red"), 2);
  EXPECT_EQ(whole(lines, "updateVrf red"), times(lines, "hwStatus red ="));
}

TEST_P(ARemoval, ThatUsersComeBackInCreatesTheActionBeforeItIsUpdated) {
  const auto before = chip->onDelete;
  chip->onDelete = [this, before](const VrfAction& action) {
    users->vrfRefCountIs(red, 1);
    if (before) before(action);
  };
  users->vrfRefCountIs(red, 0);
  const Lines lines = journal.take();
  EXPECT_EQ(whole(lines, "createVrf red"), 1);
  EXPECT_EQ(whole(lines, "updateVrf red"), 0);
  EXPECT_EQ(times(lines, "hwStatus red ="), 1);
  EXPECT_TRUE(statuses->hwStatusHas(red));
}

const auto nameOfMoment = [](UpdateMoment moment) {
  switch (moment) {
    case UpdateMoment::hook:
      return "InTheHook";
    case UpdateMoment::countGoesBefore:
      return "WhenTheCountGoesBeforeTheMachine";
    case UpdateMoment::countGoesAfter:
      return "WhenTheCountGoesAfterTheMachine";
    case UpdateMoment::statusGoesBefore:
      return "WhenTheStatusGoesBeforeTheMachine";
    case UpdateMoment::statusGoesAfter:
      return "WhenTheStatusGoesAfterTheMachine";
  }
  return "";
};

INSTANTIATE_TEST_SUITE_P(Each, ARemoval,
                         ::testing::Combine(::testing::ValuesIn(events),
                                            ::testing::Values(UpdateMoment::hook,
                                                              UpdateMoment::countGoesBefore,
                                                              UpdateMoment::countGoesAfter,
                                                              UpdateMoment::statusGoesBefore,
                                                              UpdateMoment::statusGoesAfter)),
                         [](const auto& each) {
                           return std::string(std::get<Event>(each.param).name) +
                                  nameOfMoment(std::get<UpdateMoment>(each.param));
                         });

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
