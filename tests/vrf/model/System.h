#pragma once

#include <array>
#include <map>
#include <vector>

#include "Event.h"
#include "Observers.h"
#include "ZelVrfSelectionPolicy/policy/ZelVrfSelectionPolicySm.h"

namespace VrfModel {

/// The real library, on the platform's real entities, driven by the same events as the model. A
/// chip may apply further events while one is applied.
class System {
 public:
  /// `cast` must outlive it. Without a chip it has a `ChipDouble`.
  explicit System(const Cast& cast, Mox::Ptr<ZelVrfSelectionPolicy::VrfHelper> chip = nullptr);

  void apply(const Event& event);

  /// The order in which the fallback configuration that `event` is about will be walked, if it is
  /// going to be.
  [[nodiscard]] std::vector<Name> fallbackWalk(const Event& event) const;

  /// Hook calls and notices since they were last taken.
  [[nodiscard]] Observed takeObserved() { return std::exchange(observed_, {}); }

  [[nodiscard]] const ZelVrfSelectionPolicy::VrfHwConfig& counts() const { return *counts_; }
  [[nodiscard]] const ZelVrfSelectionPolicy::VrfHwStatus& statuses() const { return *statuses_; }
  [[nodiscard]] const ZelVrfSelectionPolicy::ZelVrfSelectionPolicySm& top() const { return *top_; }
  [[nodiscard]] const ZelVrfSelectionPolicy::VrfSm* machine() const { return top_->vrfSm().get(); }
  /// How many different machines there have been.
  [[nodiscard]] unsigned built() const noexcept { return built_; }

  /// Lets go of the VRF statuses and prefix lengths that nothing else holds any more, so that a
  /// history may be of any length. They have no number from then on.
  void forgetUnheld();

  /// The number of a VRF status or of prefix lengths, by the order of the making of either.
  [[nodiscard]] unsigned numberOf(const Mox::PtrInterface* entity) const {
    return numbers_.at(entity);
  }

 private:
  using StatusPtr = Mox::Ptr<Routing::Hardware::VrfStatus>;
  using LensPtr = Mox::Ptr<Routing::Hardware::PrefixLensInExactMatch>;

  /// The route status of one set, and the last entities that were taken out or replaced.
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
  // Held, so that none takes the place of another in memory.
  std::vector<StatusPtr> statusesMade_;
  std::vector<LensPtr> lensMade_;
  unsigned statusesNumbered_ = 0;
  unsigned lensNumbered_ = 0;
  std::map<const Mox::PtrInterface*, unsigned> numbers_;
  Mox::Ptr<ZelVrfSelectionPolicy::ZelVrfSelectionPolicySm> top_;
  unsigned built_ = 0;
};

}  // namespace VrfModel
