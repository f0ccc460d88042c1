#pragma once

#include <utility>

#include "Mox/Ptr.h"
#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"

namespace ZelVrfSelectionPolicy {

/// Cuts a nested machine, which has left the collection of its `VrfSm`, off from it: whether or not
/// its last handler throws, it never calls back and is told nothing more.
template <class Machine>
class NestedSmRemoval {
 public:
  explicit NestedSmRemoval(Mox::Ptr<Machine> machine) noexcept : machine_(std::move(machine)) {}
  NestedSmRemoval(const NestedSmRemoval&) = delete;
  NestedSmRemoval& operator=(const NestedSmRemoval&) = delete;
  ~NestedSmRemoval() {
    machine_->vrfSmIs(nullptr);
    machine_->hasNotificationActiveIs(false);
  }

  [[nodiscard]] const Mox::Ptr<Machine>& machine() const noexcept { return machine_; }

 private:
  Mox::Ptr<Machine> machine_;
};

}  // namespace ZelVrfSelectionPolicy
