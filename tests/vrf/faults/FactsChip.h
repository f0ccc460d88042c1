#pragma once

#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "ZelVrfSelectionPolicy/tables/VrfHelper.h"

namespace ZelVrfSelectionPolicy::Testing {

/// What a hook throws when that is planned.
struct ChipGone : std::runtime_error {
  ChipGone() : std::runtime_error("chip is gone") {}
};

/// A chip whose program for an action is a text of all the facts that the action depends on. So
/// what it holds can be compared with what it would hold if it were programmed now. Some of its
/// calls fail or throw, as planned; the resource, if there is one, keeps its old program then.
///
/// What its hooks allocate never fails.
class FactsChip final : public VrfHelper {
 public:
  enum class Hook { create, update, remove };
  struct Call {
    Hook hook;
    VrfAction action;
    /// What it returned; nothing when it threw or removed.
    std::optional<HwStatus> outcome;
    bool threw = false;
  };

  FactsChip(const Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf const>& fallback,
            const Mox::Ptr<Routing::Hardware::RouteStatus const>& routes,
            const Mox::Ptr<Routing6::Hardware::RouteStatus const>& routes6)
      : VrfHelper("facts", fallback, routes, routes6) {}

  HwStatus createVrf(const VrfAction& action) override;
  HwStatus updateVrf(const VrfAction& action) override;
  void deleteVrf(const VrfAction& action) override;

  /// Has `length` calls fail with `outcome`, after `further` others. To remove cannot fail.
  void failAfter(unsigned further, unsigned length, const HwStatus& outcome);
  /// Has one call throw, after `further` others.
  void throwAfter(unsigned further);
  /// Whether a planned fault is still to come; withdraws all plans.
  bool faultsWithdrawn() noexcept;
  [[nodiscard]] unsigned faults() const noexcept { return faults_; }

  /// All calls since they were last taken.
  [[nodiscard]] std::vector<Call> takeCalls();

  /// What the chip holds, by the string form of the action.
  [[nodiscard]] const std::map<std::string, std::string>& resources() const noexcept {
    return resources_;
  }
  /// What it would hold for `action` if it were programmed now.
  [[nodiscard]] std::string programNow(const VrfAction& action) const;

 private:
  HwStatus program(Hook hook, const VrfAction& action);
  // Whether the present call is to fail; throws when it is to throw.
  bool isFailing(Hook hook, const VrfAction& action);
  [[nodiscard]] std::string facts(const L3::VrfName& name) const;

  std::map<std::string, std::string> resources_;
  std::vector<Call> calls_;
  unsigned untilFault_ = 0;
  unsigned faultsLeft_ = 0;
  unsigned faults_ = 0;
  std::optional<HwStatus> outcome_;  // nothing: it throws
};

}  // namespace ZelVrfSelectionPolicy::Testing
