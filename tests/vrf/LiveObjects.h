#pragma once

#include <cstddef>

#include "Quarry/Slab.h"

namespace ZelVrfSelectionPolicy::Testing {

/// The objects of that type that are alive in the process.
[[nodiscard]] inline std::size_t live(const char* typeName) {
  const Quarry::Slab* slab = Quarry::Slab::find(typeName);
  return slab == nullptr ? 0 : slab->live();
}

}  // namespace ZelVrfSelectionPolicy::Testing
