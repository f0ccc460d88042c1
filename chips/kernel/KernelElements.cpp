#include "chips/kernel/KernelElements.h"

#include <algorithm>
#include <iterator>

namespace KernelChip {
namespace {

template <class Key>
Key keyOf(const ChipTables::RuleElement& element) {
  Key key{
      std::uint32_t{zelElementBits} + element.prefix.length, element.classifier, element.field, {}};
  const auto& bytes = element.prefix.address.bytes;
  std::copy_n(bytes.begin(), std::size(key.address), std::begin(key.address));
  return key;
}

bool isV6(const ChipTables::RuleElement& element) noexcept {
  return element.prefix.address.family == Ip::Family::v6;
}

}  // namespace

bool KernelElements::elementIs(const ChipTables::RuleElement& element, std::uint32_t set) {
  return (isV6(element) ? v6_.valueIs(keyOf<ZelV6Element>(element), set)
                        : v4_.valueIs(keyOf<ZelV4Element>(element), set)) == 0;
}

void KernelElements::elementDel(const ChipTables::RuleElement& element) {
  if (isV6(element)) {
    v6_.valueDel(keyOf<ZelV6Element>(element));
  } else {
    v4_.valueDel(keyOf<ZelV4Element>(element));
  }
}

}  // namespace KernelChip
