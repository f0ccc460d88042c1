#pragma once

#include <chrono>
#include <cstddef>

#include "ZelVrfSelectionPolicy/tables/VrfHelper.h"

namespace ZelVrfSelectionPolicy::Testing::Conformance {

/// The times of the calls of one hook.
struct HookTimes {
  using Duration = std::chrono::steady_clock::duration;

  std::size_t calls = 0;
  Duration total{};
  Duration longest{};
};

/// A proxy of a chip: forwards each hook call, measures its time, and checks that it does not
/// throw. A hook that throws fails the running test, and its outcome is a failure.
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
