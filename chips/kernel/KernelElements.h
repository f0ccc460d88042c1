#pragma once

#include <cstdint>

#include "chips/kernel/BpfTable.h"
#include "chips/kernel/layout/Element.h"
#include "chips/tables/RuleElements.h"

namespace KernelChip {

/// The elements of prefix fields in two tries of the kernel, one for each family.
class KernelElements final : public ChipTables::RuleElements {
 public:
  KernelElements(int v4Map, int v6Map) noexcept : v4_(v4Map), v6_(v6Map) {}

  [[nodiscard]] bool elementIs(const ChipTables::RuleElement& element, std::uint32_t set) override;
  void elementDel(const ChipTables::RuleElement& element) override;

 private:
  BpfTable<ZelV4Element, std::uint32_t> v4_;
  BpfTable<ZelV6Element, std::uint32_t> v6_;
};

}  // namespace KernelChip
