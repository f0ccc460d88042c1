// Why: whoever asks what one change did to the chip needs the calls themselves, in their order;
// counts do not tell which action was meant.
// Always: a plain value, made after the call that it tells of.
#pragma once

#include <cstdint>
#include <functional>

#include "ZelVrfSelectionPolicy/values/VrfAction.h"

namespace SoftChip {

enum class Hook : std::uint8_t { createVrf, updateVrf, deleteVrf };

struct HookCall {
  Hook hook = Hook::createVrf;
  ZelVrfSelectionPolicy::VrfAction action;
  bool failed = false;  // deletions do not fail

  friend bool operator==(const HookCall&, const HookCall&) = default;
};

using HookObserver = std::function<void(const HookCall&)>;

}  // namespace SoftChip
