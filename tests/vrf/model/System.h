#pragma once

#include <array>
#include <map>
#include <vector>

#include "Event.h"
#include "Observers.h"
#include "ZelVrfSelectionPolicy/policy/ZelVrfSelectionPolicySm.h"

namespace VrfModel {

/// The real library on the platform's real entities, driven by the same events as the model. A hook
/// of the chip may apply further events.
class System {
 public:
  /// `cast` must outlive it. If `chip` is null, it uses a `ChipDouble`.
  explicit System(const Cast& cast, Mox::Ptr<ZelVrfSelectionPolicy::VrfHelper> chip = nullptr);

  void apply(const Event& event);

  /// The order in which the platform will iterate over the fallback configuration of `event`. Empty
  /// if the event causes no iteration.
  [[nodiscard]] std::vector<Name> fallbackWalk(const Event& event) const;

  /// Returns the hook calls and notices since the last call.
  [[nodiscard]] Observed takeObserved() { return std::exchange(observed_, {}); }

  [[nodiscard]] const ZelVrfSelectionPolicy::VrfHwConfig& counts() const { return *counts_; }
  [[nodiscard]] const ZelVrfSelectionPolicy::VrfHwStatus& statuses() const { return *statuses_; }
  [[nodiscard]] const ZelVrfSelectionPolicy::ZelVrfSelectionPolicySm& top() const { return *top_; }
  [[nodiscard]] const ZelVrfSelectionPolicy::VrfSm* machine() const { return top_->vrfSm().get(); }
  /// How many machines have been built.
  [[nodiscard]] unsigned built() const noexcept { return built_; }

  /// Releases the VRF statuses and prefix lengths that nothing else holds, so that a history may
  /// have any length. They lose their numbers.
  void forgetUnheld();

  /// The number of a VRF status or of prefix lengths. Each type has its own numbers, in the order
  /// of creation.
  [[nodiscard]] unsigned numberOf(const Mox::PtrInterface* entity) const {
    return numbers_.at(entity);
  }

 private:
  using StatusPtr = Mox::Ptr<Routing::Hardware::VrfStatus>;
  using LensPtr = Mox::Ptr<Routing::Hardware::PrefixLensInExactMatch>;

  /// The route status of one set, and the last entities that were removed or replaced.
  struct Routes {
    Mox::Ptr<Routing::Hardware::RouteStatusBase> status;
    std::map<Name, StatusPtr> retiredStatuses;
    std::map<Name, LensPtr> retiredLens;
  };

  void happenToCounts(const Event& event);
  void happenToFallbacks(const Event& event);
  void happenToStatuses(const Event& event);
  void happenToLens(const Event& event);
  void lengthsAre(const Event& event);
  void happenToFlags(const Event& event);
  void happenToMachine(const Event& event);
  void build(const Inputs& inputs);
  void call(const Event& event);

  void statusPut(Routes& routes, const Name& name, unsigned id);
  void statusRetire(Routes& routes, const Name& name);
  void lensPut(Routes& routes, const Name& name);
  void lensRetire(Routes& routes, const Name& name);

  [[nodiscard]] const Name& nameOf(const Event& event) const { return cast_.names[event.name]; }
  [[nodiscard]] Routes& routesOf(const Event& event) {
    return routes_.at(event.family).at(event.set);
  }

  const Cast& cast_;
  Observed observed_;
  Mox::Ptr<ZelVrfSelectionPolicy::VrfHwConfig> counts_;
  Mox::Ptr<ZelVrfSelectionPolicy::VrfHwStatus> statuses_;
  NoticeRecorder countNotices_;
  NoticeRecorder statusNotices_;
  Mox::Ptr<ZelVrfSelectionPolicy::VrfHelper> chip_;
  std::array<std::array<Routes, sets>, 2> routes_;
  std::array<Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf>, sets> fallbacks_;
  // Held, so that no two entities have the same address.
  std::vector<StatusPtr> statusesMade_;
  std::vector<LensPtr> lensMade_;
  unsigned statusesNumbered_ = 0;
  unsigned lensNumbered_ = 0;
  std::map<const Mox::PtrInterface*, unsigned> numbers_;
  Mox::Ptr<ZelVrfSelectionPolicy::ZelVrfSelectionPolicySm> top_;
  unsigned built_ = 0;
};

}  // namespace VrfModel
