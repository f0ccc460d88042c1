#pragma once

#include <compare>
#include <cstdint>

#include "Ip/Prefix.h"

namespace ChipTables {

/// An element of a prefix field of a classifier. A number of 16 bits is the first two bytes of an
/// IPv4 address.
struct RuleElement {
  std::uint32_t classifier = 0;
  std::uint32_t field = 0;
  Ip::Prefix prefix;

  auto operator<=>(const RuleElement&) const = default;  // NOLINT(modernize-use-nullptr): misread
};

/// The boundary to the memory that packets search for the longest element. A chip implements it.
///
/// Each call is one step for packets: a packet finds the longest element before the call or after
/// it.
class RuleElements {
 public:
  virtual ~RuleElements() = default;

  /// Adds an element with the number of its set of rules. Returns false if there is no room. Then
  /// nothing has changed.
  [[nodiscard]] virtual bool elementIs(const RuleElement& element, std::uint32_t set) = 0;
  /// Removes an element that is there.
  virtual void elementDel(const RuleElement& element) = 0;

 protected:
  RuleElements() = default;
  RuleElements(const RuleElements&) = default;
  RuleElements& operator=(const RuleElements&) = default;
};

}  // namespace ChipTables
