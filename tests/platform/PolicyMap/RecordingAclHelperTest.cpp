// That the hardware of the other tests tells a caller who breaks a promise from one who does not.
#include "testing/RecordingAclHelper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using PolicyMap::AclResult;
using PolicyMap::AclRule;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class RecordingAcl : public ::testing::Test {
 protected:
  static AclRule rule(const char* vrf) { return {{}, {PolicyMap::ActionType::vrf, vrf, {}, {}}}; }
  AclResult add(std::size_t place, const char* vrf) {
    return hardware_->addRule("eth1", place, rule(vrf));
  }
  std::string held() const {
    std::string names;
    for (const AclRule& present : hardware_->held("eth1"))
      names += present.action.vrfName.bytes();
    return names;
  }
  /// That the call is refused as broken, by that line, which the journal has too, and changes
  /// nothing.
  void expectBroken(const std::function<void()>& call, const std::string& line) {
    const std::string before = held();
    static_cast<void>(journal_.take());
    try {
      call();
      ADD_FAILURE() << "not noticed: " << line;
    } catch (const std::logic_error& error) {
      EXPECT_EQ(error.what(), line);
    }
    EXPECT_THAT(journal_.lines(), ElementsAre(line));
    EXPECT_EQ(held(), before);
  }

  Journal journal_;
  Mox::Ptr<RecordingAclHelper> hardware_ = Mox::makePtr<RecordingAclHelper>(journal_);
};

TEST_F(RecordingAcl, HoldsAListForEachInterface) {
  EXPECT_EQ(add(0, "a"), AclResult());
  EXPECT_EQ(add(0, "b"), AclResult());
  EXPECT_EQ(add(1, "c"), AclResult());
  EXPECT_EQ(hardware_->addRule("eth2", 0, rule("d")), AclResult());
  EXPECT_EQ(held(), "bca");
  EXPECT_THAT(hardware_->rules("eth2"), ElementsAre(rule("d")));
  EXPECT_THAT(hardware_->intfs(), ElementsAre(Velo::String("eth1"), Velo::String("eth2")));
  hardware_->moveRule("eth1", 0, 2);
  EXPECT_EQ(held(), "cab");
  hardware_->moveRule("eth1", 2, 1);
  EXPECT_EQ(held(), "cba");
  hardware_->removeRule("eth1", 1);
  EXPECT_EQ(held(), "ca");
  hardware_->removeRule("eth2", 0);
  EXPECT_THAT(hardware_->intfs(), ElementsAre(Velo::String("eth1")));
  EXPECT_THAT(hardware_->rules("eth2"), IsEmpty());
}

TEST_F(RecordingAcl, WritesEveryCallThatChangesSomethingDown) {
  add(0, "a");
  add(1, "b");
  hardware_->moveRule("eth1", 1, 0);
  hardware_->removeRule("eth1", 1);
  static_cast<void>(hardware_->rules("eth1"));
  static_cast<void>(hardware_->intfs());
  EXPECT_THAT(journal_.lines(),
              ElementsAre("addRule eth1 0 any->a", "addRule eth1 1 any->b",
                          "moveRule eth1 1 0 any->b", "removeRule eth1 1 any->a"));
}

TEST_F(RecordingAcl, ShowsEveryFieldOfARule) {
  AclRule full = rule("red");
  PolicyMap::AclMatch fullMatch;
  fullMatch.family = Ip::Family::v4;
  fullMatch.protocol = 4;
  fullMatch.dscps = 0xf0;
  fullMatch.source = Ip::Prefix{{Ip::Family::v4, {10}}, 8};
  fullMatch.destination = Ip::Prefix{{Ip::Family::v4, {10, 1}}, 16};
  full.match = fullMatch;
  full.action = {PolicyMap::ActionType::decapVrf, "red", "blue", "green"};
  static_cast<void>(hardware_->addRule("eth1", 0, full));
  AclRule long6 = rule("red");
  PolicyMap::AclMatch long6Match;
  long6Match.family = Ip::Family::v6;
  long6Match.source = Ip::Prefix{{Ip::Family::v6, {0x20, 0x01}}, 16};
  long6.match = long6Match;
  static_cast<void>(hardware_->addRule("eth1", 0, long6));
  EXPECT_THAT(journal_.lines(),
              ElementsAre("addRule eth1 0 v4,protocol=4,dscps=f0,source=10.0.0.0/8,"
                          "destination=10.1.0.0/16->red>blue>green:actionDecapVrf",
                          "addRule eth1 0 v6,source=2001::/16->red"));
}

TEST_F(RecordingAcl, RefusesWhatThereIsNoRoomFor) {
  hardware_->capacity = 2;
  add(0, "a");
  static_cast<void>(hardware_->addRule("eth2", 0, rule("b")));
  EXPECT_EQ(add(0, "c"), (AclResult{false, "no room for more than 2"}));
  EXPECT_EQ(held(), "a");
  hardware_->removeRule("eth2", 0);
  EXPECT_TRUE(add(0, "c").accepted);
}

TEST_F(RecordingAcl, RefusesWhatItIsToldTo) {
  hardware_->onAdd = [](const Velo::String& intf, const AclRule& added) {
    EXPECT_EQ(intf, "eth1");
    return AclResult{added.action.vrfName != "a", "not today"};
  };
  EXPECT_FALSE(add(0, "a").accepted);
  EXPECT_TRUE(add(0, "b").accepted);
  EXPECT_EQ(held(), "b");
}

TEST_F(RecordingAcl, IsAsBeforeWhenItsWorkThrows) {
  add(0, "a");
  add(1, "b");
  const auto fail = [](const Velo::String&, const AclRule&) { throw std::runtime_error("lost"); };
  hardware_->onRemove = fail;
  hardware_->onMove = fail;
  hardware_->onAdd = [](const Velo::String&, const AclRule&) -> AclResult {
    throw std::runtime_error("lost");
  };
  EXPECT_THROW(add(0, "c"), std::runtime_error);
  EXPECT_THROW(hardware_->removeRule("eth1", 0), std::runtime_error);
  EXPECT_THROW(hardware_->moveRule("eth1", 0, 1), std::runtime_error);
  EXPECT_EQ(held(), "ab");
  hardware_->onAdd = nullptr;
  EXPECT_TRUE(add(0, "c").accepted) << "the call that threw is over";
}

TEST_F(RecordingAcl, NoticesPlacesThatAreNotThere) {
  add(0, "a");
  add(1, "b");
  expectBroken([this] { add(3, "c"); }, "addRule eth1 3 is outside a list of 2");
  expectBroken([this] { hardware_->removeRule("eth1", 2); },
               "removeRule eth1 2 is outside a list of 2");
  expectBroken([this] { hardware_->removeRule("eth2", 0); },
               "removeRule eth2 0 is outside a list of 0");
  expectBroken([this] { hardware_->moveRule("eth1", 2, 0); },
               "moveRule eth1 2 0 is outside a list of 2");
  expectBroken([this] { hardware_->moveRule("eth1", 0, 2); },
               "moveRule eth1 0 2 is outside a list of 2");
  EXPECT_THAT(hardware_->intfs(), ElementsAre(Velo::String("eth1")));
}

TEST_F(RecordingAcl, NoticesCallsFromInsideAnother) {
  add(0, "a");
  hardware_->onAdd = [this](const Velo::String&, const AclRule&) {
    expectBroken([this] { add(0, "b"); }, "addRule eth1 0 comes from inside another call");
    expectBroken([this] { hardware_->removeRule("eth1", 0); },
                 "removeRule eth1 0 comes from inside another call");
    expectBroken([this] { hardware_->moveRule("eth1", 0, 0); },
                 "moveRule eth1 0 0 comes from inside another call");
    expectBroken([this] { static_cast<void>(hardware_->rules("eth1")); },
                 "rules eth1 comes from inside another call");
    expectBroken([this] { static_cast<void>(hardware_->intfs()); },
                 "intfs comes from inside another call");
    return AclResult();
  };
  EXPECT_TRUE(add(1, "c").accepted);
  EXPECT_EQ(held(), "ac");
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
