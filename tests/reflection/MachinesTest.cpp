// The state machines, by number.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "World.h"
#include "ZelVrfSelectionPolicy/vrf/PrefixLensSm.h"
#include "testing/TraceCapture.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using L3::VrfName;
using Mox::access;
using Mox::AnyValue;
using Mox::Operation;
using Mox::Ptr;
using Mox::ReturnCode;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class ReflectedMachines : public ::testing::Test {
 protected:
  using Values = std::vector<AnyValue>;

  AnyValue onSm(Mox::AttributeId number, Operation operation, const Values& arguments = {}) {
    return ask(*world_.vrfSm, number, operation, arguments);
  }
  AnyValue onInstance(Mox::AttributeId number, Operation operation) {
    return ask(*world_.instance, number, operation, {});
  }
  AnyValue onTop(Mox::AttributeId number, Operation operation) {
    return ask(*world_.top, number, operation, {});
  }
  /// The lines since the last time.
  std::vector<std::string> lines() { return world_.journal.take(); }

  World world_;

 private:
  static AnyValue ask(const Mox::Object& object, Mox::AttributeId number, Operation operation,
                      const Values& arguments) {
    const Mox::Answer answer = access(object, number, operation, arguments);
    EXPECT_EQ(answer.code, ReturnCode::success) << number;
    return answer.value;
  }
};

TEST_F(ReflectedMachines, VrfSmReadsItsInputs) {
  EXPECT_EQ(onSm(130, Operation::read), AnyValue(world_.users));
  EXPECT_EQ(onSm(131, Operation::read), AnyValue(world_.statuses));
  EXPECT_EQ(onSm(132, Operation::read), AnyValue(world_.chip));
  EXPECT_EQ(onSm(133, Operation::read), AnyValue(world_.vrfSm->vrfFallbackConfig()));
  EXPECT_EQ(onSm(134, Operation::read), AnyValue(world_.vrfSm->routingHwRouteStatus()));
  EXPECT_EQ(onSm(135, Operation::read), AnyValue(world_.vrfSm->routing6HwRouteStatus()));
}

TEST_F(ReflectedMachines, VrfSmWithoutRouteStatusesReadsThemAsNull) {
  world_.vrfSm =
      vrfSmFactory(nullptr, world_.statuses, world_.chip, world_.fallback, nullptr, nullptr);
  for (const Mox::AttributeId number : std::array<Mox::AttributeId, 3>{130, 134, 135})
    EXPECT_EQ(onSm(number, Operation::read).text().bytes(), "null") << number;
}

TEST_F(ReflectedMachines, VrfSmKeepsTheHandledFallbackVrfsOpenToAll) {
  EXPECT_EQ(onSm(136, Operation::read, {VrfName("red")}), AnyValue(VrfName("blue")));
  EXPECT_EQ(onSm(136, Operation::read, {VrfName("none")}), AnyValue(VrfName()));
  onSm(136, Operation::write, {VrfName("green"), VrfName("white")});
  EXPECT_EQ(world_.vrfSm->fallbackVrfInfo("green"), "white");
  EXPECT_EQ(onSm(136, Operation::remove, {VrfName("green")}), AnyValue(VrfName("white")));
  EXPECT_EQ(onSm(136, Operation::count), AnyValue(1U));
}

TEST_F(ReflectedMachines, VrfSmShowsTheRecordsOfDependentVrfs) {
  EXPECT_EQ(onSm(137, Operation::read, {VrfName("blue")}), AnyValue(world_.dependents));
  EXPECT_EQ(onSm(137, Operation::read, {VrfName("red")}).text().bytes(), "null");
  EXPECT_EQ(onSm(137, Operation::has, {VrfName("blue")}), AnyValue(true));
  EXPECT_EQ(onSm(137, Operation::count), AnyValue(1U));
}

TEST_F(ReflectedMachines, VrfSmShowsItsNestedMachinesTheInstancesInTwoViews) {
  for (const Mox::AttributeId number : std::array<Mox::AttributeId, 2>{143, 149}) {
    EXPECT_EQ(onSm(number, Operation::read, {VrfName("red")}), AnyValue(world_.instance));
    EXPECT_EQ(onSm(number, Operation::has, {VrfName("blue")}), AnyValue(false));
    EXPECT_EQ(onSm(number, Operation::count), AnyValue(1U));
  }
  const auto* lens = world_.vrfSm->vrfPrefixLensInExactMatch().find("red");
  EXPECT_EQ(onSm(144, Operation::read, {Velo::String("red")}), AnyValue(*lens));
  const auto* lens6 = world_.vrfSm->vrfPrefixLensInExactMatchV6().find("red");
  EXPECT_EQ(onSm(145, Operation::read, {Velo::String("red")}), AnyValue(*lens6));
  EXPECT_EQ(onSm(145, Operation::has, {Velo::String("blue")}), AnyValue(false));
}

TEST_F(ReflectedMachines, VrfSmIsIteratedByItsCollections) {
  const auto instance = Mox::iterate(*world_.vrfSm, 143);
  ASSERT_TRUE(instance && *instance);
  EXPECT_EQ(instance->key(), AnyValue(VrfName("red")));
  EXPECT_EQ(instance->value(), AnyValue(world_.instance));
  instance->next();
  EXPECT_FALSE(*instance);
}

TEST_F(ReflectedMachines, AnIterationOverInstancesSurvivesTheEndOfTheOneThatItStandsOn) {
  world_.routes->vrfStatusIs("green");
  unsigned visited = 0;
  for (const auto each = Mox::iterate(*world_.vrfSm, 149); *each; each->next(), ++visited)
    world_.routes->vrfStatusDel(each->key().as<VrfName>());
  EXPECT_EQ(visited, 2U);
  EXPECT_EQ(onSm(149, Operation::count), AnyValue(0U));
}

TEST_F(ReflectedMachines, VrfSmUpdatesActionsWhenAsked) {
  onSm(139, Operation::call, {VrfName("red")});
  EXPECT_THAT(lines(), ElementsAre("updateVrf red"));
  onSm(140, Operation::call, {world_.inRed});
  EXPECT_THAT(lines(), ElementsAre("updateVrf red"));
  onSm(141, Operation::call, {VrfName("blue"), false});
  EXPECT_THAT(lines(), ElementsAre("updateVrf red")) << "red falls back to blue";
  onSm(142, Operation::call, {VrfName("red")});
  EXPECT_THAT(lines(), ElementsAre("updateVrf red"));
  onSm(139, Operation::call, {VrfName("green")});
  EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(ReflectedMachines, VrfSmPassesTheFlagOfAFallbackChange) {
  world_.vrfSm->dependentVrfInfoIs("green")->dependentVrfsIs("blue");
  onSm(141, Operation::call, {VrfName("green"), true});
  EXPECT_THAT(lines(), IsEmpty()) << "red is not a direct dependent of green";
  onSm(141, Operation::call, {VrfName("green"), false});
  EXPECT_THAT(lines(), ElementsAre("updateVrf red"));
}

TEST_F(ReflectedMachines, VrfSmRunsItsHandlersWithoutArguments) {
  world_.routes->decapNhEnabledIs(true);
  world_.routes->decapNhFallbackEnabledIs(true);
  lines();
  onSm(146, Operation::call);
  EXPECT_THAT(lines(), ElementsAre("updateVrf red"));
  onSm(147, Operation::call);
  EXPECT_THAT(lines(), ElementsAre("updateVrf red"));
  onSm(148, Operation::call);
  EXPECT_THAT(lines(), ElementsAre("updateVrf red")) << "it handles every fallback entry";
}

TEST_F(ReflectedMachines, VrfSmHandlesAChangeOfACount) {
  const VrfAction green("green", PolicyMap::ActionType::vrf);
  world_.vrfSm->hasNotificationActiveIs(false);
  world_.users->vrfRefCountIs(green, 1);
  EXPECT_THAT(lines(), IsEmpty());
  onSm(138, Operation::call, {green});
  EXPECT_THAT(lines(), ElementsAre("createVrf green"));
}

TEST_F(ReflectedMachines, AnInstanceReadsItsPlaceAndItsName) {
  EXPECT_EQ(onInstance(130, Operation::read), AnyValue(world_.vrfSm));
  EXPECT_EQ(onInstance(131, Operation::read), AnyValue(world_.instance->vrfInstance()));
  EXPECT_EQ(onInstance(132, Operation::read), AnyValue(VrfName("red")));
  EXPECT_EQ(onInstance(133, Operation::read), AnyValue(VrfName("red")));
}

TEST_F(ReflectedMachines, AnInstanceThatWasRemovedHasNoOwner) {
  world_.vrfSm->vrfInstanceDelAll();
  EXPECT_EQ(onInstance(130, Operation::read).text().bytes(), "null");
  EXPECT_EQ(onInstance(132, Operation::read), AnyValue(VrfName("red")));
}

TEST_F(ReflectedMachines, AnInstanceRunsItsHandlers) {
  onInstance(134, Operation::call);
  EXPECT_THAT(lines(), ElementsAre("updateVrf red"));
  onInstance(135, Operation::call);
  EXPECT_THAT(lines(), ElementsAre("updateVrf red"));
  const TraceCapture trace(world_.journal);
  onInstance(136, Operation::call);
  EXPECT_THAT(lines(), ElementsAre(HasSubstr("VrfSm::VrfInstanceSm::handleInitialized: VRF:red")));
}

TEST_F(ReflectedMachines, TheTopReadsItsInputsAndWhatItOwns) {
  EXPECT_EQ(onTop(130, Operation::read), AnyValue(world_.policyHelper));
  EXPECT_EQ(onTop(131, Operation::read), AnyValue(world_.mounts));
  EXPECT_EQ(onTop(132, Operation::read), AnyValue(world_.chip));
  EXPECT_EQ(onTop(133, Operation::read), AnyValue(world_.top->vrfFallbackConfig()));
  EXPECT_EQ(onTop(134, Operation::read), AnyValue(world_.top->routingHwRouteStatus()));
  EXPECT_EQ(onTop(135, Operation::read), AnyValue(world_.top->routing6HwRouteStatus()));
  EXPECT_EQ(onTop(137, Operation::read).text().bytes(), "null");
  EXPECT_EQ(onTop(138, Operation::read), AnyValue(world_.vrfSm));
  world_.top->vrfSmDel();
  EXPECT_EQ(onTop(138, Operation::read).text().bytes(), "null");
}

TEST_F(ReflectedMachines, TheTopCallsItsHookForReadinessWhereADerivedClassOverridesIt) {
  const TraceCapture trace(world_.journal);
  onTop(136, Operation::call);
  EXPECT_THAT(lines(), ElementsAre(HasSubstr(":302 handlePolicySmReady handlePolicySmReady")));

  struct Derived final : ZelVrfSelectionPolicySm {
    Derived() : ZelVrfSelectionPolicySm(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr) {}
    void handlePolicySmReady() override { ++calls; }
    unsigned calls = 0;
  };
  const auto derived = Mox::makePtr<Derived>();
  EXPECT_EQ(access(*derived, 136, Operation::call).code, ReturnCode::success);
  EXPECT_EQ(derived->calls, 1U);
}

TEST_F(ReflectedMachines, AnExceptionOfAHandlerPassesThrough) {
  world_.chip->onUpdate = [](const VrfAction&) -> HwStatus { throw std::runtime_error("broken"); };
  EXPECT_EQ(refusal<std::runtime_error>(
                [&] { access(*world_.vrfSm, 139, Operation::call, {VrfName("red")}); }),
            "broken");
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
