#include "Mox/Reflection.h"

#include <algorithm>

namespace Mox {
namespace {

template <class Matches>
const Attribute* find(const Type& type, Matches matches) noexcept {
  if (type.reflection == nullptr) return nullptr;
  const auto attributes = type.reflection->attributes;
  const auto found = std::find_if(attributes.begin(), attributes.end(), matches);
  return found == attributes.end() ? nullptr : &*found;
}

}  // namespace

Iterator::~Iterator() = default;

const Attribute* findAttribute(const Type& type, AttributeId number) noexcept {
  return find(type, [&](const Attribute& attribute) { return attribute.number == number; });
}

const Attribute* findAttribute(const Type& type, std::string_view name) noexcept {
  return find(type, [&](const Attribute& attribute) { return attribute.name == name; });
}

}  // namespace Mox
