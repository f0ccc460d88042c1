#pragma once

#include "chips/interface/ChipVrfHelper.h"

namespace Chips {

/// The resources of a chip in software. It needs no hardware: packets follow `resources`.
class SoftVrfHelper final : public ChipVrfHelper {
 public:
  using ChipVrfHelper::ChipVrfHelper;

 private:
  [[nodiscard]] HwStatus write(const VrfResource& /*resource*/) override { return {}; }
  void erase(const VrfResource& /*resource*/) override {}
};

}  // namespace Chips
