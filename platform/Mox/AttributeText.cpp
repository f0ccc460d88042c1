#include "Mox/AttributeText.h"

#include <charconv>

namespace Mox {
namespace {

const Attribute* findByText(const Type& type, std::string_view attribute) {
  if (const Attribute* named = findAttribute(type, attribute)) return named;
  AttributeId number = 0;
  const char* end = attribute.data() + attribute.size();
  const auto read = std::from_chars(attribute.data(), end, number);
  const bool isNumber = read.ec == std::errc() && read.ptr == end;
  return isNumber ? findAttribute(type, number) : nullptr;
}

std::string listed(const Object& object, const Attribute& attribute) {
  std::string text;
  for (const auto entry = iterate(object, attribute.number); *entry; entry->next()) {
    text += entry->key().text().bytes();
    if (const AnyValue value = entry->value(); value.type() != nullptr) {
      text += ": ";
      text += value.text().bytes();
    }
    text += '\n';
  }
  return text;
}

}  // namespace

TextAnswer attributeText(const Object& object, std::string_view attribute,
                         std::optional<std::string_view> key) {
  const Attribute* found = findByText(object.type(), attribute);
  if (found == nullptr) return {ReturnCode::unknownAttribute};
  const Access& can = found->access;
  if (can.read == nullptr) return {ReturnCode::notSupported};
  if (can.key == nullptr) {
    if (key) throw ArgumentException(std::string(found->name) + ": takes no key");
    return {ReturnCode::success, can.read(object.readable(), {found->name, {}}).text().str()};
  }
  if (!key) return {ReturnCode::success, listed(object, *found)};
  const AnyValue parsedKey = AnyValue::parsed(*can.key, *key);
  const Arguments arguments(found->name, {&parsedKey, 1});
  return {ReturnCode::success, can.read(object.readable(), arguments).text().str()};
}

}  // namespace Mox
