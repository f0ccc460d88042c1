// The recording helper holds the rules of each interface in the order that the calls make.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "testing/Journal.h"
#include "testing/RecordingAclHelper.h"
#include "testing/Shown.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class RuleLists : public ::testing::Test {
 protected:
  static PolicyMap::AclRule rule(std::uint64_t dscps) {
    PolicyMap::AclRule rule;
    PolicyMap::AclMatch match;
    match.dscps = dscps;
    rule.match = match;
    return rule;
  }
  void add(std::size_t place, std::uint64_t dscps) {
    EXPECT_TRUE(helper_->addRule("eth1", place, rule(dscps)).accepted);
  }
  [[nodiscard]] std::vector<std::uint64_t> dscps() const {
    std::vector<std::uint64_t> found;
    for (const PolicyMap::AclRule& rule : helper_->rules("eth1"))
      found.push_back(rule.match->dscps.value());
    return found;
  }

  Journal journal_;
  const Mox::Ptr<RecordingAclHelper> helper_ = Mox::makePtr<RecordingAclHelper>(journal_);
};

TEST_F(RuleLists, AnAddedRuleIsAtItsPlace) {
  add(0, 1);
  add(0, 2);
  add(1, 3);
  EXPECT_THAT(dscps(), ElementsAre(2, 3, 1));
}

TEST_F(RuleLists, AMovedRuleIsAtItsNewPlaceAndTheOthersKeepTheirOrder) {
  for (std::size_t place = 0; place < 4; ++place)
    add(place, place + 1);
  helper_->moveRule("eth1", 0, 2);
  EXPECT_THAT(dscps(), ElementsAre(2, 3, 1, 4));
  helper_->moveRule("eth1", 3, 0);
  EXPECT_THAT(dscps(), ElementsAre(4, 2, 3, 1));
}

TEST_F(RuleLists, ARemovedRuleIsGoneAndMakesRoom) {
  helper_->capacity = 2;
  add(0, 1);
  add(1, 2);
  EXPECT_FALSE(helper_->addRule("eth1", 2, rule(3)).accepted);
  helper_->removeRule("eth1", 0);
  EXPECT_THAT(dscps(), ElementsAre(2));
  add(1, 3);
  EXPECT_THAT(dscps(), ElementsAre(2, 3));
}

TEST_F(RuleLists, AReplacedRuleHasTheNewActionAndNeedsNoRoom) {
  helper_->capacity = 2;
  add(0, 1);
  add(1, 2);
  PolicyMap::AclRule next = rule(2);
  next.action.vrfName = "red";
  EXPECT_TRUE(helper_->replaceRule("eth1", 1, next).accepted);
  EXPECT_EQ(helper_->rules("eth1")[1], next);
  EXPECT_THAT(dscps(), ElementsAre(1, 2));
  EXPECT_EQ(journal_.lines().back(), "replaceRule eth1 1 " + shown(next));
}

TEST_F(RuleLists, AReplacementIsRefusedOnRequest) {
  add(0, 1);
  helper_->onReplace = [](const Velo::String&, const PolicyMap::AclRule&) {
    return PolicyMap::AclResult{false, "no such action"};
  };
  PolicyMap::AclRule next = rule(1);
  next.action.vrfName = "red";
  EXPECT_FALSE(helper_->replaceRule("eth1", 0, next).accepted);
  EXPECT_EQ(helper_->rules("eth1")[0], rule(1));
}

TEST_F(RuleLists, ACallFromInsideAReplacementBreaksThePromise) {
  add(0, 1);
  helper_->onReplace = [this](const Velo::String&, const PolicyMap::AclRule&) {
    helper_->removeRule("eth1", 0);
    return PolicyMap::AclResult{};
  };
  EXPECT_THROW(static_cast<void>(helper_->replaceRule("eth1", 0, rule(1))), std::logic_error);
}

TEST_F(RuleLists, EachCallFromInsideAnotherIsRefusedAndWritten) {
  const std::vector<std::pair<std::string, std::function<void()>>> inner = {
      {"addRule eth1 0", [this] { static_cast<void>(helper_->addRule("eth1", 0, rule(1))); }},
      {"removeRule eth1 0", [this] { helper_->removeRule("eth1", 0); }},
      {"moveRule eth1 0 0", [this] { helper_->moveRule("eth1", 0, 0); }},
      {"replaceRule eth1 0",
       [this] { static_cast<void>(helper_->replaceRule("eth1", 0, rule(1))); }},
      {"close eth1", [this] { helper_->intfClosedIs("eth1", true); }},
      {"intfClosed eth1", [this] { static_cast<void>(helper_->intfClosed("eth1")); }},
      {"rules eth1", [this] { static_cast<void>(helper_->rules("eth1")); }},
      {"intfs", [this] { static_cast<void>(helper_->intfs()); }},
  };
  add(0, 1);
  for (const auto& [call, make] : inner) {
    helper_->onMove = [&make = make](const Velo::String&, const PolicyMap::AclRule&) { make(); };
    EXPECT_THROW(helper_->moveRule("eth1", 0, 0), std::logic_error) << call;
    EXPECT_EQ(journal_.lines().back(), call + " comes from inside another call");
  }
  EXPECT_THAT(dscps(), ElementsAre(1));
  EXPECT_FALSE(helper_->intfClosed("eth1"));
}

TEST_F(RuleLists, NoChangeAllowsAnotherCallMeanwhile) {
  const auto refused = [this](const std::function<void()>& call) {
    EXPECT_THROW(call(), std::logic_error);
    EXPECT_EQ(journal_.lines().back(), "intfs comes from inside another call");
  };
  const auto look = [this](const Velo::String&, const PolicyMap::AclRule&) {
    static_cast<void>(helper_->intfs());
  };
  const auto lookAndAccept = [this](const Velo::String&, const PolicyMap::AclRule&) {
    static_cast<void>(helper_->intfs());
    return PolicyMap::AclResult();
  };
  add(0, 1);
  helper_->onAdd = helper_->onReplace = lookAndAccept;
  helper_->onRemove = helper_->onMove = look;
  refused([this] { static_cast<void>(helper_->addRule("eth1", 0, rule(2))); });
  refused([this] { helper_->removeRule("eth1", 0); });
  refused([this] { helper_->moveRule("eth1", 0, 0); });
  refused([this] { static_cast<void>(helper_->replaceRule("eth1", 0, rule(1))); });
  EXPECT_THAT(dscps(), ElementsAre(1));
}

TEST_F(RuleLists, AReplacementWithAnotherMatchOrOutsideTheListBreaksThePromise) {
  add(0, 1);
  EXPECT_THROW(static_cast<void>(helper_->replaceRule("eth1", 0, rule(2))), std::logic_error);
  EXPECT_THROW(static_cast<void>(helper_->replaceRule("eth1", 1, rule(1))), std::logic_error);
  EXPECT_THAT(dscps(), ElementsAre(1));
}

TEST_F(RuleLists, AClosedInterfaceIsListed) {
  helper_->intfClosedIs("eth1", true);
  EXPECT_TRUE(helper_->intfClosed("eth1"));
  EXPECT_FALSE(helper_->intfClosed("eth2"));
  EXPECT_THAT(helper_->intfs(), ElementsAre(Velo::String("eth1")));
  helper_->intfClosedIs("eth1", false);
  EXPECT_THAT(helper_->intfs(), IsEmpty());
  EXPECT_THAT(journal_.lines(), ElementsAre("close eth1", "open eth1"));
}

TEST_F(RuleLists, AnInterfaceWithoutRulesIsNotListed) {
  add(0, 1);
  EXPECT_THAT(helper_->intfs(), ElementsAre(Velo::String("eth1")));
  helper_->removeRule("eth1", 0);
  EXPECT_THAT(helper_->intfs(), IsEmpty());
}

TEST_F(RuleLists, APlaceOutsideTheListIsRefused) {
  EXPECT_THROW(static_cast<void>(helper_->addRule("eth1", 1, rule(1))), std::logic_error);
  add(0, 1);
  EXPECT_THROW(helper_->removeRule("eth1", 1), std::logic_error);
  EXPECT_THROW(helper_->moveRule("eth1", 0, 1), std::logic_error);
  EXPECT_THROW(helper_->moveRule("eth1", 1, 0), std::logic_error);
  EXPECT_THAT(dscps(), ElementsAre(1));
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
