#include "Mox/EnumType.h"

#include <algorithm>
#include <array>
#include <optional>

namespace Mox {
namespace {

std::optional<unsigned char> find(std::span<const std::string_view> names, std::string_view name) {
  const auto found = std::find(names.begin(), names.end(), name);
  if (found == names.end()) return std::nullopt;
  return static_cast<unsigned char>(found - names.begin());
}

// The decimal texts "0" to "255", in static storage.
std::string_view decimal(unsigned char code) noexcept {
  static const auto texts = [] {
    std::array<std::array<char, 4>, 256> all{};
    for (unsigned value = 0; value < all.size(); ++value) {
      std::string digits = std::to_string(value);
      std::copy(digits.begin(), digits.end(), all[value].begin());
    }
    return all;
  }();
  return texts[code].data();
}

}  // namespace

std::string_view EnumType<unsigned char>::name(unsigned char code) const noexcept {
  return code < names_.size() ? names_[code] : decimal(code);
}

unsigned char EnumType<unsigned char>::code(unsigned code) const {
  if (code < names_.size()) return static_cast<unsigned char>(code);
  throw RangeException("no " + std::string(typeName_) + " has the code " + std::to_string(code) +
                       ", expected 0 to " + std::to_string(names_.size() - 1));
}

unsigned char EnumType<unsigned char>::code(std::string_view name) const {
  if (const auto found = find(names_, name)) return *found;
  throw RangeException("no " + std::string(typeName_) + " has the name '" + std::string(name) +
                       "', expected " + allNames());
}

unsigned char EnumType<unsigned char>::read(CharRange& range) const {
  CharRange ahead = range;
  const auto found = find(names_, ahead.needWord());
  if (!found) range.fail(allNames());
  range = ahead;
  return *found;
}

std::string EnumType<unsigned char>::allNames() const {
  std::string all;
  for (const std::string_view name : names_) {
    if (!all.empty()) all += name == names_.back() ? " or " : ", ";
    all += name;
  }
  return all;
}

}  // namespace Mox
