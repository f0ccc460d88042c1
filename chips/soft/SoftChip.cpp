#include "chips/soft/SoftChip.h"

namespace Chips {

SoftChip::SoftChip(const ProgramInputs& inputs, const TableSizes& sizes)
    : vrfHelper_(
          Mox::makeActivePtr<SoftVrfHelper>(Velo::String("softChip"), inputs, sizes.resources)),
      rules_(Mox::makeActivePtr<SoftAclHelper>(Velo::String("softChip"), sizes.rules)),
      aclHelper_(rules_),
      forwarder_(*rules_, *vrfHelper_, routes_, inputs) {}

SoftChip::~SoftChip() = default;

}  // namespace Chips
