#pragma once

#include <memory>

#include "chips/interface/Chip.h"

namespace Chips {

/// Makes the chip of an agent. Nothing else in an agent names a chip.
[[nodiscard]] std::unique_ptr<Chip> makeChip(const ProgramInputs& inputs, const TableSizes& sizes);

}  // namespace Chips
