// Fuzzes the library with a chip whose hooks call back into it. The input is the choices that make
// up a history, as for `histories`, and also the events that happen during hook calls, which may be
// nested.
//
// The hook calls have the order that `VrfHelper` guarantees. After each outermost event exactly the
// actions with a resource have a status, which is the last one reported. While one machine follows
// the counts without interruption, these are the actions with users. The reference model does not
// model such hooks. The tables decide instead which events are allowed: counts that would stop the
// process, and calls of a machine that does not exist, are skipped.
//
// If the environment variable ZEL_FUZZ_TRACE is set, events and hook calls are printed when they
// begin, indented by their depth.

#include <cstdlib>
#include <iostream>
#include <string>

#include "fuzz/FuzzedChoices.h"
#include "fuzz/Must.h"
#include "fuzz/ReentrantChip.h"
#include "tests/vrf/model/Conversions.h"
#include "tests/vrf/model/EventSource.h"
#include "tests/vrf/model/System.h"

namespace {

using Fuzz::FuzzedChoices;
using Fuzz::must;
using VrfModel::Cast;
using VrfModel::Event;
using VrfModel::Kind;
using ZelVrfSelectionPolicy::VrfAction;
using ZelVrfSelectionPolicy::VrfSm;

constexpr unsigned longestHistory = 150;
constexpr unsigned deepest = 4;

class ReentrantHistory final {
 public:
  explicit ReentrantHistory(FuzzedChoices& choices) : choices_(choices), cast_(castOf(choices)) {}

  void run() {
    Event build;
    build.kind = Kind::machineBuild;
    apply(build);
    isFollowed_ = true;
    while (!choices_.areUsedUp() && events_ < longestHistory) {
      apply(source_.next());
      static_cast<void>(system_.takeObserved());
      check();
    }
  }

 private:
  void interrupt(const std::string& hook) {
    trace("  " + hook);
    if (depth_ == deepest || choices_.areUsedUp() || !choices_.once(3)) return;
    apply(source_.next());
  }

  void apply(const Event& event) {
    if (!isAllowed(event)) return;
    if (event.kind >= Kind::topActive && event.kind <= Kind::machineDrop) isFollowed_ = false;
    ++events_;
    ++depth_;
    trace(shown(event, cast_));
    system_.apply(event);
    --depth_;
  }

  void trace(const std::string& text) const {
    static const bool isTraced = std::getenv("ZEL_FUZZ_TRACE") != nullptr;
    if (isTraced) std::cerr << std::string(std::size_t{depth_} * 4, ' ') << text << '\n';
  }

  [[nodiscard]] bool isAllowed(const Event& event) const {
    if (event.kind <= Kind::countDeleteAll) return isCountAllowed(event);
    if (event.kind == Kind::machineActive || event.kind == Kind::machineZombie) {
      return system_.machine() != nullptr;
    }
    return event.kind < Kind::callUpdates || isCallAllowed(event);
  }

  [[nodiscard]] bool isCountAllowed(const Event& event) const {
    const auto& counts = system_.counts();
    if (event.kind == Kind::countDeleteAll) {
      for (auto entry = counts.vrfRefCount().iterator(); entry; ++entry) {
        if (!hasResource(entry.key())) return false;
      }
      return true;
    }
    const VrfAction action = actionOf(event);
    const bool isThere = counts.vrfRefCount().has(action);
    if (event.kind == Kind::countDelete) return !isThere || hasResource(action);
    const unsigned count = newCount(event, counts.vrfRefCount(action));
    const bool isChange = !isThere || count != counts.vrfRefCount(action);
    return !isChange || count == 1 || hasResource(action);
  }

  static unsigned newCount(const Event& event, unsigned present) {
    if (event.kind == Kind::countRaise) return present + event.number;
    if (event.kind == Kind::countLower) return present - event.number;
    return event.number;
  }

  [[nodiscard]] bool isCallAllowed(const Event& event) const {
    const VrfSm* const machine = system_.machine();
    if (machine == nullptr || machine->isZombie()) return false;
    const VrfAction action = actionOf(event);
    switch (event.kind) {
      case Kind::callUpdateAction:
        return system_.statuses().hwStatusHas(action) && !isUnderWay(action);
      case Kind::callCount:
        return machine->vrfHwConfig() != nullptr &&
               (hasResource(action) || system_.counts().vrfRefCount(action) == 1);
      case Kind::callDecapNh:
      case Kind::callDecapNhFallback:
        return machine->routingHwRouteStatus() != nullptr;
      default:
        return true;
    }
  }

  // Also true while the resource is created or deleted: the hook call under way handles a change of
  // the count.
  [[nodiscard]] bool hasResource(const VrfAction& action) const {
    return system_.statuses().hwStatusHas(action) || isUnderWay(action);
  }
  [[nodiscard]] bool isUnderWay(const VrfAction& action) const { return chip_->isUnderWay(action); }

  void check() const {
    chip_->check(system_.statuses());
    if (!isFollowed_) return;
    must(system_.counts().vrfRefCount().count() == system_.statuses().hwStatus().count(),
         "there are as many actions with users as with a status");
    for (auto entry = system_.counts().vrfRefCount().iterator(); entry; ++entry) {
      must(entry.value() != 0, "an action without users has no count");
      must(system_.statuses().hwStatusHas(entry.key()), "an action with users has a status");
    }
  }

  [[nodiscard]] VrfAction actionOf(const Event& event) const {
    return VrfModel::real(cast_.actions[event.action]);
  }

  FuzzedChoices& choices_;
  const Cast cast_;
  VrfModel::EventSource source_{cast_, choices_};
  Mox::Ptr<Fuzz::ReentrantChip> chip_ =
      Mox::makePtr<Fuzz::ReentrantChip>([this](const std::string& hook) { interrupt(hook); });
  VrfModel::System system_{cast_, chip_};
  unsigned events_ = 0;
  unsigned depth_ = 0;
  bool isFollowed_ = false;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedChoices choices(data, size);
  ReentrantHistory(choices).run();
  return 0;
}
