// The elements of prefix fields in plain memory, and the search for the longest.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <iterator>
#include <map>
#include <utility>

#include "chips/tables/RuleElements.h"
#include "chips/tables/layout/Classify.h"

namespace ChipTables {

class PlainElements final : public RuleElements {
 public:
  // `observer` is called after each change.
  explicit PlainElements(
      std::size_t capacity, std::function<void()> observer = [] {})
      : capacity_(capacity), observer_(std::move(observer)) {}

  bool elementIs(const RuleElement& element, std::uint32_t set) override {
    if (sets_.size() >= capacity_) return false;
    sets_[element] = set;
    ++lengths_.at(element.prefix.length);
    observer_();
    return true;
  }
  void elementDel(const RuleElement& element) override {
    sets_.erase(element);
    --lengths_.at(element.prefix.length);
    observer_();
  }

  [[nodiscard]] std::uint32_t longest(const ZelPacketFields& packet, std::uint32_t classifier,
                                      std::uint32_t field) const {
    const Ip::Address value = valueOf(packet, field);
    for (unsigned length = Ip::addressBits(value.family) + 1; length-- > 0;) {
      if (lengths_.at(length) == 0) continue;
      const RuleElement element{
          classifier, field, {Ip::firstBits(value, length), static_cast<std::uint8_t>(length)}};
      const auto found = sets_.find(element);
      if (found != sets_.end()) return found->second;
    }
    return zelNoRules;
  }
  [[nodiscard]] std::size_t size() const noexcept { return sets_.size(); }

 private:
  static Ip::Address valueOf(const ZelPacketFields& packet, std::uint32_t field) {
    Ip::Address value;
    if (field == zelSourceField || field == zelDestinationField) {
      value.family = packet.family == 0 ? Ip::Family::v4 : Ip::Family::v6;
      const auto& bytes = field == zelSourceField ? packet.source : packet.destination;
      std::copy(std::begin(bytes), std::end(bytes), value.bytes.begin());
    } else {
      const std::uint16_t number = zelNumberOf(&packet, field);
      value.bytes[0] = static_cast<std::uint8_t>(number >> 8);
      value.bytes[1] = static_cast<std::uint8_t>(number);
    }
    return value;
  }

  std::size_t capacity_;
  std::function<void()> observer_;
  std::map<RuleElement, std::uint32_t> sets_;
  std::array<std::size_t, 129> lengths_{};  // how many elements have the length
};

}  // namespace ChipTables
