#pragma once

#include <chrono>
#include <cstddef>

#include "ZelVrfSelectionPolicy/tables/VrfHelper.h"

namespace ZelVrfSelectionPolicy::Testing::Conformance {

/// How long the calls of one hook took.
struct HookTimes {
  using Duration = std::chrono::steady_clock::duration;

  std::size_t calls = 0;
  Duration total{};
  Duration longest{};
};

/// Stands between the library and a chip: passes each call on, takes its time, and holds the chip
/// to throwing nothing. A hook that throws fails the running test, and counts as one that failed.
class WatchedVrfHelper final : public VrfHelper {
 public:
  /// `chip` must not be null.
  explicit WatchedVrfHelper(const Mox::Ptr<VrfHelper>& chip);

  HwStatus createVrf(const VrfAction& action) override;
  HwStatus updateVrf(const VrfAction& action) override;
  void deleteVrf(const VrfAction& action) override;

  [[nodiscard]] const HookTimes& creations() const noexcept { return creations_; }
  [[nodiscard]] const HookTimes& updates() const noexcept { return updates_; }
  [[nodiscard]] const HookTimes& deletions() const noexcept { return deletions_; }

 private:
  Mox::Ptr<VrfHelper> chip_;
  HookTimes creations_;
  HookTimes updates_;
  HookTimes deletions_;
};

}  // namespace ZelVrfSelectionPolicy::Testing::Conformance
