// One removal of an action's users is one deletion of its resource, whoever else listens and
// whatever they do meanwhile.

#include <algorithm>
#include <array>
#include <functional>
#include <utility>

#include "tests/vrf/FrameFixture.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A subscriber of both tables under a name of its own: journals what each notice says, and then
/// may do some work about one of them, once.
class Watcher {
 public:
  Watcher(Journal& journal, std::string name, const Mox::Ptr<VrfHwConfig>& users,
          const Mox::Ptr<VrfHwStatus>& statuses)
      : journal_(journal),
        name_(std::move(name)),
        users_(users),
        statuses_(statuses),
        ofUsers_(*this),
        ofStatuses_(*this) {
    ofUsers_.dispatch = [](Velo::Publisher*, Velo::Subscriber* subscriber, short, const void* key,
                           const void* value) {
      const auto* count = static_cast<const unsigned*>(value);
      Member::ownerOf(subscriber)
          .noticed("vrfRefCount", key, count == nullptr ? "gone" : std::to_string(*count));
    };
    ofStatuses_.dispatch = [](Velo::Publisher*, Velo::Subscriber* subscriber, short,
                              const void* key, const void* value) {
      Member::ownerOf(subscriber).noticed("hwStatus", key, value == nullptr ? "gone" : "set");
    };
    users_->publisher().subscriberIs(ofUsers_);
    statuses_->publisher().subscriberIs(ofStatuses_);
  }
  Watcher(const Watcher&) = delete;
  Watcher& operator=(const Watcher&) = delete;
  ~Watcher() {
    users_->publisher().subscriberDel(ofUsers_);
    statuses_->publisher().subscriberDel(ofStatuses_);
  }

  /// Does `work` right after the next notice that reads `notice`, as in "vrfRefCount red gone".
  void on(std::string notice, std::function<void()> work) {
    awaited_ = std::move(notice);
    work_ = std::move(work);
  }

 private:
  using Member = Velo::MemberSubscriber<Watcher>;

  void noticed(const std::string& table, const void* key, const std::string& value) {
    const std::string vrf = static_cast<const VrfAction*>(key)->vrfName().str();
    const std::string notice = table + " " + vrf + " " + value;
    journal_.write(name_ + ": " + notice);
    if (notice != awaited_) return;
    awaited_.clear();
    std::exchange(work_, nullptr)();
  }

  Journal& journal_;
  std::string name_;
  Mox::Ptr<VrfHwConfig> users_;
  Mox::Ptr<VrfHwStatus> statuses_;
  Member ofUsers_;
  Member ofStatuses_;
  std::string awaited_;
  std::function<void()> work_;
};

// Red has a resource and one user; one watcher subscribed before the machine, one after it.
class VrfSmRemoval : public VrfSmFrameFixture {
 protected:
  void SetUp() override {
    before.emplace(journal, "before", users, statuses);
    start();
    after.emplace(journal, "after", users, statuses);
    users->vrfRefCountIs(red, 1);
    journalTrace();
    forgetLines();
  }

  // Runs `work` inside the next deletion.
  void inTheHook(std::function<void()> work) {
    chip->onDelete = [this, work = std::move(work)](const VrfAction&) {
      const auto now = std::exchange(chip->onDelete, nullptr);
      work();
    };
  }

  static auto times(const Lines& lines, const std::string& line) {
    return std::ranges::count(lines, line);
  }
  void expectRedHasNothing() {
    EXPECT_FALSE(users->vrfRefCount().has(red));
    EXPECT_FALSE(statuses->hwStatusHas(red));
  }

  std::optional<Watcher> before;
  std::optional<Watcher> after;
};

TEST_F(VrfSmRemoval, ByACountOfZeroDeletesOnceAndTellsEverySubscriberOfEachChangeOnce) {
  users->vrfRefCountIs(red, 0);
  EXPECT_THAT(journal.take(),
              ElementsAre("before: vrfRefCount red 0", "deleteVrf red", deleting("red"),
                          "before: vrfRefCount red gone", "after: vrfRefCount red gone",
                          "before: hwStatus red gone", "after: hwStatus red gone",
                          "after: vrfRefCount red 0"));
  expectRedHasNothing();
}

TEST_F(VrfSmRemoval, ByRemovingTheEntryDeletesOnceAndTellsEverySubscriberOnce) {
  users->vrfRefCountDel(red);
  EXPECT_THAT(journal.take(),
              ElementsAre("before: vrfRefCount red gone", "deleteVrf red", deleting("red"),
                          "before: hwStatus red gone", "after: hwStatus red gone",
                          "after: vrfRefCount red gone"));
  expectRedHasNothing();
}

TEST_F(VrfSmRemoval, ByRemovingAllEntriesDeletesEachOnce) {
  users->vrfRefCountIs(blue, 1);
  forgetLines();
  users->vrfRefCountDelAll();
  const Lines lines = journal.take();
  for (const std::string vrf : {"red", "blue"}) {
    EXPECT_EQ(times(lines, "deleteVrf " + vrf), 1);
    EXPECT_EQ(times(lines, deleting(vrf)), 1);
    for (const std::string watcher : {"before", "after"}) {
      EXPECT_EQ(times(lines, watcher + ": vrfRefCount " + vrf + " gone"), 1);
      EXPECT_EQ(times(lines, watcher + ": hwStatus " + vrf + " gone"), 1);
    }
  }
}

TEST_F(VrfSmRemoval, EachRemovalOfALongLifeDeletesOnce) {
  for (int life = 0; life < 3; ++life) {
    users->vrfRefCountIs(red, 0);
    const Lines lines = journal.take();
    EXPECT_EQ(times(lines, "deleteVrf red"), 1);
    EXPECT_EQ(times(lines, deleting("red")), 1);
    expectRedHasNothing();
    users->vrfRefCountIs(red, 1);
    forgetLines();
  }
}

TEST_F(VrfSmRemoval, WhoseHookRemovesTheCountEntryItselfIsStillOneRemoval) {
  inTheHook([this] { users->vrfRefCountDel(red); });
  users->vrfRefCountIs(red, 0);
  EXPECT_THAT(
      journal.take(),
      ElementsAre("before: vrfRefCount red 0", "deleteVrf red", "before: vrfRefCount red gone",
                  "after: vrfRefCount red gone", deleting("red"), "before: hwStatus red gone",
                  "after: hwStatus red gone", "after: vrfRefCount red 0"));
  expectRedHasNothing();
}

TEST_F(VrfSmRemoval, ThatIsTakenBackBeforeTheMachineHearsOfItDoesNotHappen) {
  before->on("vrfRefCount red 0", [this] { users->vrfRefCountIs(red, 1); });
  users->vrfRefCountIs(red, 0);
  EXPECT_THAT(journal.take(), ElementsAre("before: vrfRefCount red 0", "before: vrfRefCount red 1",
                                          alreadyInUse("red", 1), "after: vrfRefCount red 1",
                                          alreadyInUse("red", 1), "after: vrfRefCount red 0"));
  EXPECT_TRUE(statuses->hwStatusHas(red));
}

TEST_F(VrfSmRemoval, ThatIsCompleteWhenAUserComesIsFollowedByAnOrdinaryCreation) {
  after->on("vrfRefCount red 0", [this] { users->vrfRefCountIs(red, 1); });
  users->vrfRefCountIs(red, 0);
  const Lines lines = journal.take();
  EXPECT_THAT(Lines(lines.end() - 5, lines.end()),
              ElementsAre("before: vrfRefCount red 1", "createVrf red", "before: hwStatus red set",
                          "after: hwStatus red set", "after: vrfRefCount red 1"));
  EXPECT_EQ(times(lines, "deleteVrf red"), 1);
}

TEST_F(VrfSmRemoval, DuringWhichTheHookCountsAUserCreatesAnewWhenComplete) {
  inTheHook([this] { users->vrfRefCountIs(red, 1); });
  users->vrfRefCountIs(red, 0);
  EXPECT_THAT(journal.take(),
              ElementsAre("before: vrfRefCount red 0", "deleteVrf red", "before: vrfRefCount red 1",
                          "after: vrfRefCount red 1", deleting("red"), "before: hwStatus red gone",
                          "after: hwStatus red gone", "createVrf red", "before: hwStatus red set",
                          "after: hwStatus red set", "after: vrfRefCount red 0"));
  EXPECT_EQ(users->vrfRefCount(red), 1U);
}

TEST_F(VrfSmRemoval, DuringWhichAUserComesAtTheEntrysRemovalCreatesAnewWhenComplete) {
  after->on("vrfRefCount red gone", [this] { users->vrfRefCountIs(red, 1); });
  users->vrfRefCountIs(red, 0);
  EXPECT_THAT(journal.take(),
              ElementsAre("before: vrfRefCount red 0", "deleteVrf red", deleting("red"),
                          "before: vrfRefCount red gone", "after: vrfRefCount red gone",
                          "before: vrfRefCount red 1", "after: vrfRefCount red 1",
                          "before: hwStatus red gone", "after: hwStatus red gone", "createVrf red",
                          "before: hwStatus red set", "after: hwStatus red set",
                          "after: vrfRefCount red 0"));
}

TEST_F(VrfSmRemoval, DuringWhichAUserComesAtTheStatusEntrysRemovalCreatesAnewWhenComplete) {
  before->on("hwStatus red gone", [this] { users->vrfRefCountIs(red, 1); });
  users->vrfRefCountIs(red, 0);
  EXPECT_THAT(journal.take(),
              ElementsAre("before: vrfRefCount red 0", "deleteVrf red", deleting("red"),
                          "before: vrfRefCount red gone", "after: vrfRefCount red gone",
                          "before: hwStatus red gone", "before: vrfRefCount red 1",
                          "after: vrfRefCount red 1", "after: hwStatus red gone", "createVrf red",
                          "before: hwStatus red set", "after: hwStatus red set",
                          "after: vrfRefCount red 0"));
}

/// When, in the course of a removal, another user does something.
enum class RemovalMoment {
  hook,
  countNoticeBeforeTheMachine,
  countNoticeAfterTheMachine,
  statusNoticeOfTheFirst,
  statusNoticeOfTheLast
};

class VrfSmRemovalMoments : public VrfSmRemoval,
                            public ::testing::WithParamInterface<RemovalMoment> {
 protected:
  // Removes red's users, by a count of zero, and does `work` at the moment of this test.
  Lines removeDoing(const std::function<void()>& work) {
    switch (GetParam()) {
      case RemovalMoment::hook:
        inTheHook(work);
        break;
      case RemovalMoment::countNoticeBeforeTheMachine:
        before->on("vrfRefCount red gone", work);
        break;
      case RemovalMoment::countNoticeAfterTheMachine:
        after->on("vrfRefCount red gone", work);
        break;
      case RemovalMoment::statusNoticeOfTheFirst:
        before->on("hwStatus red gone", work);
        break;
      case RemovalMoment::statusNoticeOfTheLast:
        after->on("hwStatus red gone", work);
        break;
    }
    users->vrfRefCountIs(red, 0);
    return journal.take();
  }

  // Once deleted, with its trace, and only then created anew, once.
  static void expectCreatedAnew(const Lines& lines) {
    EXPECT_EQ(times(lines, "deleteVrf red"), 1);
    EXPECT_EQ(times(lines, deleting("red")), 1);
    EXPECT_EQ(times(lines, "createVrf red"), 1);
    EXPECT_LT(std::ranges::find(lines, "deleteVrf red"), std::ranges::find(lines, "createVrf red"));
    for (const std::string watcher : {"before", "after"}) {
      EXPECT_EQ(times(lines, watcher + ": hwStatus red gone"), 1);
      EXPECT_EQ(times(lines, watcher + ": hwStatus red set"), 1);
      EXPECT_EQ(times(lines, watcher + ": vrfRefCount red 0"), 1);
    }
    EXPECT_LT(std::ranges::find(lines, "after: hwStatus red gone"),
              std::ranges::find(lines, "createVrf red"));
  }
  // The machine follows red as if nothing had been special about its life.
  void expectAnOrdinaryEnd() {
    forgetLines();
    users->vrfRefCountIs(red, 0);
    const Lines lines = journal.take();
    EXPECT_EQ(times(lines, "deleteVrf red"), 1);
    EXPECT_EQ(times(lines, deleting("red")), 1);
    EXPECT_EQ(times(lines, "createVrf red"), 0);
    expectRedHasNothing();
  }
};

TEST_P(VrfSmRemovalMoments, AUserWhoComesThenHasTheResourceCreatedAnew) {
  expectCreatedAnew(removeDoing([this] { users->vrfRefCountIs(red, 1); }));
  EXPECT_EQ(users->vrfRefCount(red), 1U);
  EXPECT_TRUE(statuses->hwStatusHas(red));
  expectAnOrdinaryEnd();
}

TEST_P(VrfSmRemovalMoments, TwoUsersWhoComeAtOnceHaveItCreatedAnewOnceAndAreBothCounted) {
  expectCreatedAnew(removeDoing([this] { users->vrfRefCountIs(red, 2); }));
  EXPECT_EQ(users->vrfRefCount(red), 2U);
  EXPECT_TRUE(statuses->hwStatusHas(red));
  users->vrfRefCountDec(red, 1);
  EXPECT_EQ(times(journal.take(), alreadyInUse("red", 1)), 1);
  expectAnOrdinaryEnd();
}

TEST_P(VrfSmRemovalMoments, TwoUsersWhoComeOneByOneHaveItCreatedAnewOnceAndAreBothCounted) {
  expectCreatedAnew(removeDoing([this] {
    users->vrfRefCountInc(red, 1);
    users->vrfRefCountInc(red, 1);
  }));
  EXPECT_EQ(users->vrfRefCount(red), 2U);
  expectAnOrdinaryEnd();
}

TEST_P(VrfSmRemovalMoments, AUserWhoComesAndLeavesAgainChangesNothing) {
  const Lines lines = removeDoing([this] {
    users->vrfRefCountIs(red, 1);
    users->vrfRefCountIs(red, 0);
  });
  EXPECT_EQ(times(lines, "deleteVrf red"), 1);
  EXPECT_EQ(times(lines, deleting("red")), 1);
  EXPECT_EQ(times(lines, "createVrf red"), 0);
  expectRedHasNothing();
  users->vrfRefCountIs(red, 1);
  EXPECT_EQ(times(journal.take(), "createVrf red"), 1);
  expectAnOrdinaryEnd();
}

TEST_P(VrfSmRemovalMoments, AUserWhoComesAndIsRemovedWithItsEntryChangesNothing) {
  const Lines lines = removeDoing([this] {
    users->vrfRefCountIs(red, 1);
    users->vrfRefCountDel(red);
  });
  EXPECT_EQ(times(lines, "deleteVrf red"), 1);
  EXPECT_EQ(times(lines, deleting("red")), 1);
  EXPECT_EQ(times(lines, "createVrf red"), 0);
  expectRedHasNothing();
}

TEST_P(VrfSmRemovalMoments, AUserWhoComesLeavesAndComesBackHasItCreatedAnewOnce) {
  const Lines lines = removeDoing([this] {
    for (const unsigned count : {1U, 0U, 1U})
      users->vrfRefCountIs(red, count);
  });
  EXPECT_EQ(times(lines, "deleteVrf red"), 1);
  EXPECT_EQ(times(lines, deleting("red")), 1);
  EXPECT_EQ(times(lines, "createVrf red"), 1);
  EXPECT_EQ(users->vrfRefCount(red), 1U);
  EXPECT_TRUE(statuses->hwStatusHas(red));
  expectAnOrdinaryEnd();
}

TEST_P(VrfSmRemovalMoments, AnotherActionsFirstUserHasItsResourceCreatedAtOnce) {
  const Lines lines = removeDoing([this] {
    users->vrfRefCountIs(green, 1);
    EXPECT_TRUE(statuses->hwStatusHas(green));
  });
  EXPECT_EQ(times(lines, "createVrf green"), 1);
  EXPECT_EQ(times(lines, "deleteVrf red"), 1);
  EXPECT_EQ(times(lines, deleting("red")), 1);
  EXPECT_EQ(times(lines, "createVrf red"), 0);
  expectRedHasNothing();
}

TEST_P(VrfSmRemovalMoments, AnotherActionsFurtherUserIsHandledAtOnce) {
  users->vrfRefCountIs(green, 1);
  forgetLines();
  const Lines lines = removeDoing([this] { users->vrfRefCountIs(green, 2); });
  EXPECT_EQ(times(lines, alreadyInUse("green", 2)), 1);
  EXPECT_EQ(times(lines, "deleteVrf red"), 1);
  expectRedHasNothing();
}

TEST_P(VrfSmRemovalMoments, AnotherActionsRemovalIsCompleteWithinIt) {
  users->vrfRefCountIs(green, 1);
  forgetLines();
  const Lines lines = removeDoing([this] {
    users->vrfRefCountIs(green, 0);
    EXPECT_FALSE(statuses->hwStatusHas(green));
    EXPECT_FALSE(users->vrfRefCount().has(green));
  });
  for (const std::string vrf : {"red", "green"}) {
    EXPECT_EQ(times(lines, "deleteVrf " + vrf), 1);
    EXPECT_EQ(times(lines, deleting(vrf)), 1);
    for (const std::string watcher : {"before", "after"}) {
      EXPECT_EQ(times(lines, watcher + ": vrfRefCount " + vrf + " 0"), 1);
      EXPECT_EQ(times(lines, watcher + ": vrfRefCount " + vrf + " gone"), 1);
      EXPECT_EQ(times(lines, watcher + ": hwStatus " + vrf + " gone"), 1);
    }
  }
  expectRedHasNothing();
}

TEST_P(VrfSmRemovalMoments, AnUpdateOfItsVrfDoesNotReachTheResourceThatIsGoing) {
  const Lines lines = removeDoing([this] { vrfSm->handleVrfUpdates("red", false); });
  EXPECT_EQ(times(lines, "updateVrf red"), 0);
  EXPECT_EQ(times(lines, "deleteVrf red"), 1);
  expectRedHasNothing();
}

std::string nameOf(const ::testing::TestParamInfo<RemovalMoment>& moment) {
  constexpr std::array names{"InTheHook", "AtTheCountNoticeBeforeTheMachine",
                             "AtTheCountNoticeAfterTheMachine", "AtTheFirstStatusNotice",
                             "AtTheLastStatusNotice"};
  return names.at(static_cast<std::size_t>(moment.param));
}

INSTANTIATE_TEST_SUITE_P(EveryMoment, VrfSmRemovalMoments,
                         ::testing::Values(RemovalMoment::hook,
                                           RemovalMoment::countNoticeBeforeTheMachine,
                                           RemovalMoment::countNoticeAfterTheMachine,
                                           RemovalMoment::statusNoticeOfTheFirst,
                                           RemovalMoment::statusNoticeOfTheLast),
                         nameOf);

TEST_F(VrfSmRemoval, InsideAnotherOneEachIsWholeAndTheOuterGoesOn) {
  before.reset();
  users->vrfRefCountIs(blue, 1);
  forgetLines();
  inTheHook([this] { users->vrfRefCountIs(blue, 0); });
  users->vrfRefCountIs(red, 0);
  EXPECT_THAT(journal.take(), ElementsAre("deleteVrf red", "deleteVrf blue", deleting("blue"),
                                          "after: vrfRefCount blue gone",
                                          "after: hwStatus blue gone", "after: vrfRefCount blue 0",
                                          deleting("red"), "after: vrfRefCount red gone",
                                          "after: hwStatus red gone", "after: vrfRefCount red 0"));
}

TEST_F(VrfSmRemoval, WhoseActionGetsAUserInsideAnotherRemovalIsFollowedByItsCreation) {
  before.reset();
  after.reset();
  users->vrfRefCountIs(blue, 1);
  forgetLines();
  chip->onDelete = [this](const VrfAction& action) {
    if (action == red) {
      users->vrfRefCountIs(blue, 0);
    } else {
      users->vrfRefCountIs(red, 1);
    }
  };
  users->vrfRefCountIs(red, 0);
  EXPECT_THAT(journal.take(), ElementsAre("deleteVrf red", "deleteVrf blue", deleting("blue"),
                                          deleting("red"), "createVrf red"));
  EXPECT_FALSE(statuses->hwStatusHas(blue));
  EXPECT_TRUE(statuses->hwStatusHas(red));
}

TEST_F(VrfSmRemoval, InsideTheCreationThatFollowedAnotherIsHandledWhenThatIsComplete) {
  before.reset();
  after.reset();
  inTheHook([this] { users->vrfRefCountIs(red, 1); });
  chip->onCreate = [this](const VrfAction&) {
    users->vrfRefCountIs(red, 0);
    return HwStatus();
  };
  users->vrfRefCountIs(red, 0);
  EXPECT_THAT(journal.take(), ElementsAre("deleteVrf red", deleting("red"), "createVrf red",
                                          "deleteVrf red", deleting("red")));
  expectRedHasNothing();
}

TEST_F(VrfSmRemoval, WhoseNewCreationFailsTracesAndStoresTheFailure) {
  before.reset();
  after.reset();
  inTheHook([this] { users->vrfRefCountIs(red, 2); });
  chip->onCreate = [](const VrfAction&) {
    return failure(FailureCode::failureVrfResourceExhausted, "still being freed");
  };
  users->vrfRefCountIs(red, 0);
  EXPECT_THAT(journal.take(), ElementsAre("deleteVrf red", deleting("red"), "createVrf red",
                                          createFailed("red", "failureVrfResourceExhausted")));
  EXPECT_EQ(statuses->hwStatus(red),
            failure(FailureCode::failureVrfResourceExhausted, "still being freed"));
}

TEST_F(VrfSmRemoval, WhoseHookThrowsLeavesTheMachineInOrder) {
  before.reset();
  after.reset();
  chip->onDelete = [](const VrfAction&) { throw std::runtime_error("chip is gone"); };
  EXPECT_THROW(users->vrfRefCountIs(red, 0), std::runtime_error);
  EXPECT_TRUE(statuses->hwStatusHas(red));
  chip->onDelete = nullptr;
  forgetLines();
  users->vrfRefCountIs(red, 1);
  users->vrfRefCountIs(red, 0);
  EXPECT_THAT(journal.take(),
              ElementsAre(alreadyInUse("red", 1), "deleteVrf red", deleting("red")));
  expectRedHasNothing();
}

TEST_F(VrfSmRemoval, AWatcherThatGoesDuringItIsToldNothingMore) {
  before->on("vrfRefCount red gone", [this] { after.reset(); });
  users->vrfRefCountIs(red, 0);
  EXPECT_THAT(journal.take(),
              ElementsAre("before: vrfRefCount red 0", "deleteVrf red", deleting("red"),
                          "before: vrfRefCount red gone", "before: hwStatus red gone"));
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
