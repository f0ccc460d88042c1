#pragma once

#include "chips/interface/Chip.h"
#include "chips/soft/SoftAclHelper.h"
#include "chips/soft/SoftForwarder.h"
#include "chips/soft/SoftRouteTables.h"
#include "chips/soft/SoftVrfHelper.h"

namespace Chips {

/// A chip in software. It needs no hardware, shows all that it was given, and fails on request.
class SoftChip final : public Chip {
 public:
  SoftChip(const ProgramInputs& inputs, const TableSizes& sizes);
  ~SoftChip() override;

  [[nodiscard]] const Mox::Ptr<ChipVrfHelper>& vrfHelper() override { return vrfHelper_; }
  [[nodiscard]] const Mox::Ptr<ChipAclHelper>& aclHelper() override { return aclHelper_; }
  [[nodiscard]] RouteTables& routes() override { return routes_; }
  [[nodiscard]] Forwarder& forwarder() override { return forwarder_; }

 private:
  Mox::Ptr<ChipVrfHelper> vrfHelper_;
  Mox::Ptr<SoftAclHelper> rules_;
  Mox::Ptr<ChipAclHelper> aclHelper_;  // the same
  SoftRouteTables routes_;
  SoftForwarder forwarder_;
};

}  // namespace Chips
