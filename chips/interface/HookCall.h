#pragma once

#include <cstdint>
#include <functional>

#include "ZelVrfSelectionPolicy/values/VrfAction.h"

namespace Chips {

enum class Hook : std::uint8_t { createVrf, updateVrf, deleteVrf };

/// A hook call as a plain value, made after the call.
struct HookCall {
  Hook hook = Hook::createVrf;
  ZelVrfSelectionPolicy::VrfAction action;
  bool failed = false;  // deletions do not fail

  friend bool operator==(const HookCall&, const HookCall&) = default;
};

using HookObserver = std::function<void(const HookCall&)>;

}  // namespace Chips
