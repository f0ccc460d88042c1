// The VRF state machine starts on complete inputs: 4,096 VRF statuses, 4,096 prefix-length entries
// per family, 1,024 fallback entries, 100,000 statuses. The peer is a bare loop that sends the same
// messages and calls the same hooks. Then the same call is repeated, which keeps the machine, and
// the machine is destroyed. The peer of both is one allocation and one release in a pool for each
// nested machine.

#include <boost/pool/pool.hpp>
#include <stdexcept>

#include "Blinklog/Ring.h"
#include "ZelVrfSelectionPolicy/policy/ZelVrfSelectionPolicySm.h"
#include "ZelVrfSelectionPolicy/vrf/VrfInstanceSm.h"
#include "benchmarks/Families.h"
#include "benchmarks/World.h"

namespace Benchmarks {
namespace {

using ZelVrfSelectionPolicy::HwStatus;
using ZelVrfSelectionPolicy::VrfAction;
using ZelVrfSelectionPolicy::VrfHelper;
using ZelVrfSelectionPolicy::VrfSm;
using ZelVrfSelectionPolicy::ZelVrfSelectionPolicySm;

constexpr unsigned fallbackEntries = 1024;
constexpr std::size_t statusCount = 100'000;
constexpr std::size_t nestedMachines = 3 * std::size_t{vrfCount};

/// The inputs of one start.
struct Inputs {
  Inputs() {
    for (const L3::VrfName& vrf : vrfNames()) {
      world.routes->vrfStatusIs(vrf)->vrfIdIs(1);
      world.routes->vrfPrefixLensInExactMatchIs(vrf.str());
      world.routes6->vrfPrefixLensInExactMatchIs(vrf.str());
    }
    Draw draw(6);
    for (unsigned i = 0; i < fallbackEntries; ++i)
      world.fallback->fallbackVrfIs(vrfNames()[i], draw.vrf());
    for (const VrfAction& action : actions(statusCount, 1)) {
      world.statuses->hwStatusIs(action, HwStatus());
      world.users->vrfRefCountIs(action, 1);
    }
    world.vrfSm = nullptr;
  }

  Mox::Ptr<VrfSm> start(const Mox::Ptr<VrfHelper>& chip) const {
    return top->vrfSmIs(world.users, world.statuses, chip, world.fallback, world.routes,
                        world.routes6);
  }

  World world;
  Mox::Ptr<ZelVrfSelectionPolicySm> top = ZelVrfSelectionPolicy::zelVrfSelectionPolicySmFactory(
      nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
};

/// One step of a start: messages, then one hook call.
struct Step {
  std::uint64_t messages;
  const VrfAction* action;
};

/// A chip that records the steps of a start.
class RecordingChip final : public VrfHelper {
 public:
  explicit RecordingChip(Mox::Ptr<ZelVrfSelectionPolicy::VrfHwStatus> statuses)
      : VrfHelper("recording", nullptr, nullptr, nullptr), statuses_(std::move(statuses)) {}
  HwStatus createVrf(const VrfAction& /*action*/) override { return {}; }
  HwStatus updateVrf(const VrfAction& action) override {
    const auto& table = statuses_->hwStatus();
    steps_.push_back({messagesSince(), &table.key(table.position(action))});
    return {};
  }
  void deleteVrf(const VrfAction& /*action*/) override {}

  [[nodiscard]] const std::vector<Step>& steps() const noexcept { return steps_; }

 private:
  std::uint64_t messagesSince() {
    const std::uint64_t written = Blinklog::ring().written();
    return written - std::exchange(written_, written);
  }

  Mox::Ptr<ZelVrfSelectionPolicy::VrfHwStatus> statuses_;
  std::uint64_t written_ = Blinklog::ring().written();
  std::vector<Step> steps_;
};

std::vector<Step> stepsOf(const Inputs& inputs) {
  const auto chip = Mox::makePtr<RecordingChip>(inputs.world.statuses);
  static_cast<void>(inputs.start(chip));
  static_cast<void>(inputs.top->vrfSmDel());
  return chip->steps();
}

void bareStart(const std::vector<Step>& steps, VrfHelper& chip, BareRing& ring) {
  const std::string_view name = vrfNames()[0].bytes();
  for (const Step& step : steps) {
    for (std::uint64_t i = 0; i < step.messages; ++i)
      ring.write(1, name);
    benchmark::DoNotOptimize(chip.updateVrf(*step.action));
  }
}

void start(Report& report, const Inputs& inputs) {
  const std::vector<Step> steps = stepsOf(inputs);
  BareRing ring;
  Comparison("start-up: vrfSmIs, " + std::to_string(steps.size()) + " hook calls")
      .oursPass([&] {
        const double took = timed([&] { static_cast<void>(inputs.start(inputs.world.chip)); });
        static_cast<void>(inputs.top->vrfSmDel());
        return took;
      })
      .besidePass("bare loop of hook calls and messages", ratioAtMost(3.0),
                  [&] { return timed([&] { bareStart(steps, *inputs.world.chip, ring); }); })
      .measure(report);
}

void requireNoCalls(const Inputs& inputs, std::uint64_t before) {
  const auto& chip = static_cast<const CountingChip&>(*inputs.world.chip);
  if (chip.calls() != before) throw std::logic_error("a rebuild or teardown called the chip");
}

std::uint64_t callsOf(const Inputs& inputs) {
  return static_cast<const CountingChip&>(*inputs.world.chip).calls();
}

/// Allocates and releases one block for each nested machine. A block has the size of a machine.
double poolPass(boost::pool<>& pool) {
  std::vector<void*> blocks(nestedMachines);
  return timed([&] {
    for (void*& block : blocks)
      block = pool.malloc();
    for (void* block : blocks)
      pool.free(block);
  });
}

void rebuildAndEnd(Report& report, const Inputs& inputs) {
  static_cast<void>(inputs.start(inputs.world.chip));
  boost::pool<> pool(sizeof(VrfSm::VrfInstanceSm));
  Comparison("rebuild on the same inputs, per nested machine")
      .timesWork(static_cast<double>(nestedMachines))
      .oursPass([&] {
        const std::uint64_t before = callsOf(inputs);
        const double took = timed([&] { static_cast<void>(inputs.start(inputs.world.chip)); });
        requireNoCalls(inputs, before);
        return took;
      })
      .besidePass("boost::pool, allocation and release", ratioAtMost(1.0),
                  [&] { return poolPass(pool); })
      .measure(report);
  Comparison("teardown, per nested machine")
      .timesWork(static_cast<double>(nestedMachines))
      .oursPass([&] {
        static_cast<void>(inputs.start(inputs.world.chip));
        const std::uint64_t before = callsOf(inputs);
        const double took = timed([&] { static_cast<void>(inputs.top->vrfSmDel()); });
        requireNoCalls(inputs, before);
        return took;
      })
      .besidePass("boost::pool, allocation and release", ratioAtMost(1.0),
                  [&] { return poolPass(pool); })
      .measure(report);
}

}  // namespace

void startUp(Report& report) {
  const Inputs inputs;
  start(report, inputs);
  rebuildAndEnd(report, inputs);
}

}  // namespace Benchmarks
