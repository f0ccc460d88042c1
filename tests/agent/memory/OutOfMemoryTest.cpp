// When memory ends in the middle of a change, the process ends with a message and goes on with no
// half of it: every allocation of every kind of work fails in turn.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <new>
#include <ostream>
#include <string>
#include <string_view>

#include "Blinklog/Ring.h"
#include "Blinklog/RingImage.h"
#include "Mox/TraceHandle.h"
#include "ZelVrfSelectionPolicy/ZelVrfSelectionPolicy.h"
#include "agent/model/policies/UserCountingAclHelper.h"
#include "chips/soft/SoftAclHelper.h"
#include "chips/soft/SoftVrfHelper.h"
#include "tests/agent/memory/FailingAllocation.h"
#include "tests/agent/memory/ForkedProcess.h"
#include "tests/platform/Blinklog/RingFolder.h"

namespace ZelAgent {
namespace {

using Chips::SoftAclHelper;
using Chips::SoftVrfHelper;
using PolicyMap::ActionType;
using VrfSelectionPolicy::VrfSelectionFallbackVrf;
using ZelVrfSelectionPolicy::HwStatus;
using ZelVrfSelectionPolicy::VrfAction;

// The software chip, the tables that drive it, and the agent's way to its rules. All that work is
// given is made here, so that what allocates is the work.
class World final {
 public:
  World() { routes_->vrfStatusIs("red")->vrfIdIs(1); }

  void addUser() { users_->vrfRefCountInc(action_, 1); }
  void removeUser() { users_->vrfRefCountDec(action_, 1); }
  void setFallback() { fallbacks_->fallbackVrfIs(red_, blue_); }
  void addRule() { static_cast<void>(acl_->addRule(intf_, 0, rule_)); }
  void removeRule() { acl_->removeRule(intf_, 0); }

  // One user, and everything there is to one.
  [[nodiscard]] bool isProgrammed() const {
    const Chips::VrfResource* const resource = chip_->resource(action_);
    return users_->vrfRefCount().count() == 1 && users_->vrfRefCount(action_) == 1 &&
           statuses_->hwStatus().count() == 1 && statuses_->hwStatusHas(action_) &&
           statuses_->hwStatus(action_) == HwStatus() && chip_->resources().size() == 1 &&
           resource != nullptr && resource->program == chip_->currentProgram(action_);
  }
  // No user, and nothing left of one.
  [[nodiscard]] bool isClear() const {
    return users_->vrfRefCount().count() == 0 && statuses_->hwStatus().count() == 0 &&
           chip_->resources().empty();
  }
  [[nodiscard]] bool hasFallback() const {
    const auto* const fallback = fallbacks_->fallbackVrf().find(red_);
    return fallback != nullptr && *fallback == blue_;
  }
  [[nodiscard]] bool hasRule() const {
    return acl_->rules(intf_) == std::vector<PolicyMap::AclRule>{rule_};
  }
  [[nodiscard]] bool hasNoRule() const { return acl_->intfs().empty(); }

 private:
  const L3::VrfName red_{"red"};
  const L3::VrfName blue_{"blue"};
  const VrfAction action_{red_, ActionType::vrf};
  const Velo::String intf_{"e1"};
  const PolicyMap::AclRule rule_{{}, {ActionType::vrf, "red", {}, {}}};
  Mox::Ptr<VrfSelectionFallbackVrf> fallbacks_ =
      VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs();
  Mox::Ptr<Routing::Hardware::RouteStatus> routes_ =
      Routing::Hardware::RouteStatus::RouteStatusIs();
  Mox::Ptr<Routing6::Hardware::RouteStatus> routesV6_ =
      Routing6::Hardware::RouteStatus::RouteStatusIs();
  Mox::Ptr<ZelVrfSelectionPolicy::VrfHwConfig> users_ = ZelVrfSelectionPolicy::vrfHwConfigFactory();
  Mox::Ptr<ZelVrfSelectionPolicy::VrfHwStatus> statuses_ =
      ZelVrfSelectionPolicy::vrfHwStatusFactory();
  Mox::Ptr<SoftVrfHelper> chip_ = Mox::makeActivePtr<SoftVrfHelper>(
      Velo::String("chip"), Chips::ProgramInputs{fallbacks_, routes_, routesV6_}, 10U);
  Mox::Ptr<ZelVrfSelectionPolicy::VrfSm> vrfSm_ = ZelVrfSelectionPolicy::VrfSm::VrfSmIs(
      users_, statuses_, chip_, fallbacks_, routes_, routesV6_);
  Mox::Ptr<UserCountingAclHelper> acl_ = Mox::makeActivePtr<UserCountingAclHelper>(
      Velo::String("counting"), Mox::makeActivePtr<SoftAclHelper>(Velo::String("acl"), 10U),
      users_);
};

struct Work {
  const char* name;
  void (*prepare)(World& world);
  void (*change)(World& world);
  bool (*isDone)(const World& world);
};

[[maybe_unused]] void PrintTo(const Work& work, std::ostream* stream) {
  *stream << work.name;
}

constexpr Work firstUser{"FirstUser", [](World&) {}, [](World& world) { world.addUser(); },
                         [](const World& world) { return world.isProgrammed(); }};
constexpr Work update{
    "Update", [](World& world) { world.addUser(); }, [](World& world) { world.setFallback(); },
    [](const World& world) { return world.hasFallback() && world.isProgrammed(); }};
constexpr Work lastUser{"LastUser", [](World& world) { world.addUser(); },
                        [](World& world) { world.removeUser(); },
                        [](const World& world) { return world.isClear(); }};
constexpr Work ruleAdded{
    "RuleAdded", [](World&) {}, [](World& world) { world.addRule(); },
    [](const World& world) { return world.hasRule() && world.isProgrammed(); }};
constexpr Work ruleRemoved{"RuleRemoved", [](World& world) { world.addRule(); },
                           [](World& world) { world.removeRule(); },
                           [](const World& world) { return world.hasNoRule() && world.isClear(); }};

// What a process says that came to the end of its work.
constexpr std::string_view done = "done";
constexpr std::string_view doneInSpite = "done in spite of a failed allocation";
constexpr std::string_view halfDone = "half done";

class OutOfMemory : public ::testing::Test {
 protected:
  // Does the work in a new process where the allocation after `passing` others fails. `begin` comes
  // before everything else there.
  template <class Begin>
  Remains endOf(const Work& work, std::size_t passing, Begin begin) const {
    return inForkedProcess([&](const Report& report) {
      Mox::traceSinkIs([](std::string_view) {});
      Blinklog::ring().fileIs(file_);
      begin();
      World world;
      work.prepare(world);
      allocationFailsAfter(passing);
      work.change(world);
      const bool failed = allocationsSucceed();
      report(std::string(!work.isDone(world) ? halfDone : failed ? doneInSpite : done));
    });
  }
  [[nodiscard]] std::string lastInRing() const {
    const Blinklog::RingImage image(file_);
    return image.records().empty() ? "nothing" : image.records().back().text;
  }
  // It was aborted, and said why.
  void expectEnded(const Remains& remains, const std::string& onStderr) const {
    EXPECT_TRUE(WIFSIGNALED(remains.status));
    EXPECT_EQ(WTERMSIG(remains.status), SIGABRT);
    EXPECT_EQ(remains.reported, "");
    EXPECT_EQ(remains.onStderr, onStderr);
    EXPECT_EQ(lastInRing(), "out of memory");
  }
  static void expectDone(const Remains& remains, std::string_view reported) {
    EXPECT_TRUE(WIFEXITED(remains.status));
    EXPECT_EQ(WEXITSTATUS(remains.status), 0);
    EXPECT_EQ(remains.reported, reported);
    EXPECT_EQ(remains.onStderr, "");
  }

 private:
  Blinklog::RingFolder folder_;
  std::string file_ = folder_.path("ring");
};

// A kind of work, and whether every message is shown as text meanwhile.
class OutOfMemoryIn : public OutOfMemory,
                      public ::testing::WithParamInterface<std::tuple<Work, bool>> {};

TEST_P(OutOfMemoryIn, EveryAllocationEndsTheProcessUnlessTheWorkIsDone) {
  const auto& [work, isShown] = GetParam();
  const auto begin = [shown = isShown] {
    if (shown) Mox::traceLevelsIs("*=*");
  };
  int ended = 0;
  for (std::size_t passing = 0; !HasFailure(); ++passing) {
    SCOPED_TRACE("after " + std::to_string(passing) + " allocations");
    const Remains remains = endOf(work, passing, begin);
    if (remains.reported == done) {
      expectDone(remains, done);
      break;
    }
    if (remains.reported.empty()) {
      expectEnded(remains, "out of memory\n");
      ++ended;
    } else {
      expectDone(remains, doneInSpite);
    }
  }
  EXPECT_GT(ended, 0);
  RecordProperty("ended", ended);
}

INSTANTIATE_TEST_SUITE_P(Work, OutOfMemoryIn,
                         ::testing::Combine(::testing::Values(firstUser, update, lastUser,
                                                              ruleAdded, ruleRemoved),
                                            ::testing::Bool()),
                         [](const auto& parameter) {
                           return std::string(std::get<Work>(parameter.param).name) +
                                  (std::get<bool>(parameter.param) ? "WhileItIsShown" : "");
                         });

TEST_F(OutOfMemory, EndsAProcessThatHasNoStderr) {
  const Remains remains = endOf(firstUser, 0, [] { close(STDERR_FILENO); });
  expectEnded(remains, "");
}

TEST_F(OutOfMemory, IsForTheNewHandlerOfAProcessThatHasOne) {
  const Remains remains = endOf(firstUser, 0, [] { std::set_new_handler([] { _exit(3); }); });
  EXPECT_TRUE(WIFEXITED(remains.status));
  EXPECT_EQ(WEXITSTATUS(remains.status), 3);
  EXPECT_EQ(remains.onStderr, "");
  EXPECT_NE(lastInRing(), "out of memory");
}

TEST_F(OutOfMemory, IsNoneWhereTheNewHandlerOfTheProcessFindsMemory) {
  const Remains remains = endOf(firstUser, 0, [] { std::set_new_handler([] {}); });
  expectDone(remains, doneInSpite);
}

}  // namespace
}  // namespace ZelAgent
