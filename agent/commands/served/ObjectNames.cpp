#include "agent/commands/served/ObjectNames.h"

#include <memory>
#include <utility>

#include "Mox/ReflectiveAccess.h"
#include "agent/commands/served/LiveObjects.h"
#include "agent/language/Words.h"

namespace ZelAgent {
namespace {

// Whether `name` is "...::end" or all of it.
bool endsWithName(std::string_view name, std::string_view end) {
  if (!name.ends_with(end)) return false;
  return name.size() == end.size() || name.substr(0, name.size() - end.size()).ends_with("::");
}

// A type without attributes is found by its whole name only.
bool isNamed(const Mox::Type& type, std::string_view name) {
  if (type.name == name) return true;
  const bool hasAttributes = type.reflection != nullptr && !type.reflection->attributes.empty();
  return hasAttributes && endsWithName(type.name, name);
}

std::string lastPartOf(std::string_view name) {
  const std::size_t colons = name.rfind("::");
  return std::string(colons == std::string_view::npos ? name : name.substr(colons + 2));
}

std::vector<Mox::AnyValue> keysOfEntries(const Mox::Object& object, std::string_view name) {
  const Mox::Attribute* const attribute = attributeNamed(object.type(), name);
  if (attribute == nullptr || attribute->access.iterate == nullptr) return {};
  std::vector<Mox::AnyValue> keys;
  for (const auto entry = Mox::iterate(object, attribute->number); *entry; entry->next())
    keys.push_back(entry->key());
  return keys;
}

}  // namespace

const Mox::Type* typeNamed(std::string_view name) {
  for (const std::string_view module : Mox::moxModules()) {
    for (const Mox::Type* const type : Mox::moxModuleTypes(module)) {
      if (isNamed(*type, name)) return type;
    }
  }
  return nullptr;
}

std::vector<std::string> readableTypes() {
  std::vector<std::string> names;
  for (const std::string_view module : Mox::moxModules()) {
    for (const Mox::Type* const type : Mox::moxModuleTypes(module)) {
      if (!readableAttributesOf(*type).empty()) names.push_back(lastPartOf(type->name));
    }
  }
  return names;
}

std::vector<std::string> attributesOf(const Mox::Type& type) {
  std::vector<std::string> names;
  if (type.reflection == nullptr) return names;
  for (const Mox::Attribute& attribute : type.reflection->attributes)
    names.emplace_back(attribute.name);
  return names;
}

std::vector<std::string> readableAttributesOf(const Mox::Type& type) {
  std::vector<std::string> names;
  if (type.reflection == nullptr) return names;
  for (const Mox::Attribute& attribute : type.reflection->attributes) {
    if (attribute.access.read != nullptr) names.emplace_back(attribute.name);
  }
  return names;
}

const Mox::Attribute* attributeNamed(const Mox::Type& type, std::string_view name) {
  if (const Mox::Attribute* const named = Mox::findAttribute(type, name)) return named;
  const auto number = parseNumber(name);
  if (!number || !std::in_range<Mox::AttributeId>(*number)) return nullptr;
  return Mox::findAttribute(type, static_cast<Mox::AttributeId>(*number));
}

std::vector<Mox::AnyValue> keysOf(const Mox::PtrInterface& top, const Mox::Type& type,
                                  std::string_view attribute) {
  const std::vector<LiveObject> objects = liveObjects(top, type);
  if (objects.size() == 1 && objects.front().label.empty()) {
    return keysOfEntries(objects.front().object(), attribute);
  }
  std::vector<Mox::AnyValue> keys;
  for (const LiveObject& object : objects) {
    if (object.key.type() != nullptr) keys.push_back(object.key);
  }
  return keys;
}

}  // namespace ZelAgent
