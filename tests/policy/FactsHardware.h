#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "ZelVrfSelectionPolicy/tables/VrfHelper.h"

namespace ZelVrfSelectionPolicy::Testing {

/// What resources depend on besides their actions.
struct Facts {
  Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf> fallback =
      VrfSelectionPolicy::VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs();
  Mox::Ptr<Routing::Hardware::RouteStatus> routes = Routing::Hardware::RouteStatus::RouteStatusIs();
  Mox::Ptr<Routing6::Hardware::RouteStatus> routes6 =
      Routing6::Hardware::RouteStatus::RouteStatusIs();

  /// What the hardware is to hold for `action` as they are now: for each VRF that it names, the id
  /// and prefix lengths of that VRF and of those that it falls back to, as deep as a change of one
  /// of them is propagated.
  [[nodiscard]] std::string programOf(const VrfAction& action) const;
};

/// The resources of one chip, whichever helper programs them. What it holds for an action is a text
/// of the facts at the time of the call, so that what is stale differs from what would be
/// programmed now.
///
/// Work may be done from inside a call. It begins when the resource is programmed, so that a fact
/// that it changes is not in the program yet. Calls that the work leads to are not counted.
class FactsHardware {
 public:
  using Work = std::function<void(unsigned call)>;

  /// `facts` are those that every call reads.
  explicit FactsHardware(const Facts& facts) : facts_(facts) {}

  HwStatus create(const VrfAction& action);
  /// Nothing is programmed for an action that has no resource.
  HwStatus update(const VrfAction& action);
  void remove(const VrfAction& action);

  /// What each call that is not inside another does, by its number from 1 on: before the resource
  /// is touched, and after that.
  Work before;
  Work after;
  /// What the next creation or deletion does in the end, inside another call or not.
  std::function<void()> inNextLifecycleCall;

  /// How many calls there were that were not inside another.
  [[nodiscard]] unsigned outerCalls() const noexcept { return outerCalls_; }
  [[nodiscard]] std::vector<std::string> takeCalls() { return std::exchange(calls_, {}); }
  /// What it holds, by actions as `shown` has them.
  [[nodiscard]] const std::map<std::string, std::string>& programs() const { return programs_; }

 private:
  class Call;

  void performLifecycleWork();

  const Facts& facts_;
  std::map<std::string, std::string> programs_;
  std::vector<std::string> calls_;
  unsigned outerCalls_ = 0;
  unsigned depth_ = 0;
};

/// One of the helpers that program a `FactsHardware`, which must outlive it.
class FactsHelper final : public VrfHelper {
 public:
  explicit FactsHelper(FactsHardware& hardware)
      : VrfHelper("facts", nullptr, nullptr, nullptr), hardware_(hardware) {}

  HwStatus createVrf(const VrfAction& action) override { return hardware_.create(action); }
  HwStatus updateVrf(const VrfAction& action) override { return hardware_.update(action); }
  void deleteVrf(const VrfAction& action) override { hardware_.remove(action); }

 private:
  FactsHardware& hardware_;
};

}  // namespace ZelVrfSelectionPolicy::Testing
