#pragma once

#include "Mox/Ptr.h"
#include "chips/interface/ChipAclHelper.h"
#include "chips/interface/ChipVrfHelper.h"
#include "chips/interface/Forwarder.h"
#include "chips/interface/RouteTables.h"

namespace Chips {

/// The sizes of a chip's tables.
struct TableSizes {
  std::uint32_t resources = 0;
  std::uint32_t rules = 0;
};

/// A chip, as the agent uses it: all that one has, without saying which.
///
/// The chip owns its parts. They live as long as it does, and the helpers as long as someone holds
/// them.
class Chip {
 public:
  virtual ~Chip() = default;

  /// The hooks that the library calls, and the resources that they made.
  [[nodiscard]] virtual const Mox::Ptr<ChipVrfHelper>& vrfHelper() = 0;
  /// The rules by which packets are classified.
  [[nodiscard]] virtual const Mox::Ptr<ChipAclHelper>& aclHelper() = 0;
  /// The routes of VRFs.
  [[nodiscard]] virtual RouteTables& routes() = 0;
  /// What happens to packets.
  [[nodiscard]] virtual Forwarder& forwarder() = 0;

 protected:
  Chip() = default;
  Chip(const Chip&) = default;
  Chip& operator=(const Chip&) = default;
};

}  // namespace Chips
