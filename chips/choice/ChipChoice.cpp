#include "chips/choice/ChipChoice.h"

#include "chips/soft/SoftChip.h"

namespace Chips {

std::unique_ptr<Chip> makeChip(const ProgramInputs& inputs, const TableSizes& sizes) {
  return std::make_unique<SoftChip>(inputs, sizes);
}

}  // namespace Chips
