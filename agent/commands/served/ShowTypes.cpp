#include "agent/commands/served/ServedCommands.h"

#include <nlohmann/json.hpp>
#include <span>

#include "Mox/Reflection.h"
#include "Mox/Type.h"
#include "agent/language/TextTable.h"
#include "agent/language/Words.h"

namespace ZelAgent {
namespace {

struct NamedOperation {
  Mox::Operation operation;
  const char* name;
};

constexpr NamedOperation operations[] = {
    {Mox::Operation::read, "read"},         {Mox::Operation::write, "write"},
    {Mox::Operation::remove, "delete"},     {Mox::Operation::count, "size"},
    {Mox::Operation::capacity, "capacity"}, {Mox::Operation::has, "membership"},
    {Mox::Operation::call, "call"},
};

std::vector<std::string> operationsOf(const Mox::Attribute& attribute) {
  std::vector<std::string> names;
  for (const NamedOperation& named : operations) {
    if (attribute.accepts(named.operation)) names.emplace_back(named.name);
  }
  if (attribute.access.iterate != nullptr) names.emplace_back("iterate");
  return names;
}

std::vector<std::string> valueNamesOf(const Mox::Type& type) {
  if (type.reflection == nullptr || type.reflection->names == nullptr) return {};
  const auto names = type.reflection->names();
  return {names.begin(), names.end()};
}

std::span<const Mox::Attribute> attributesOf(const Mox::Type& type) {
  if (type.reflection == nullptr) return {};
  return type.reflection->attributes;
}

void writeType(std::ostream& out, const Mox::Type& type) {
  out << type.name << '\n';
  if (const auto names = valueNamesOf(type); !names.empty()) {
    out << "  one of " << joined(names, ", ") << '\n';
  }
  if (attributesOf(type).empty()) return;
  TextTable table{{"NUMBER", "ATTRIBUTE", "KIND", "OPERATIONS"}};
  for (const Mox::Attribute& attribute : attributesOf(type)) {
    table.push_back({std::to_string(attribute.number), std::string(attribute.name),
                     attribute.kind(), joined(operationsOf(attribute), ", ")});
  }
  writeTable(out, table);
}

OrderedJson typeJson(const Mox::Type& type) {
  OrderedJson attributes = OrderedJson::array();
  for (const Mox::Attribute& attribute : attributesOf(type)) {
    attributes.push_back({{"number", attribute.number},
                          {"name", attribute.name},
                          {"kind", attribute.kind()},
                          {"operations", operationsOf(attribute)}});
  }
  return {{"type", type.name}, {"names", valueNamesOf(type)}, {"attributes", attributes}};
}

void writeModules(std::ostream& out) {
  for (const std::string_view module : Mox::moxModules()) {
    out << "module " << module << '\n';
    for (const Mox::Type* const type : Mox::moxModuleTypes(module))
      writeType(out, *type);
  }
}

OrderedJson modulesJson() {
  OrderedJson json = OrderedJson::array();
  for (const std::string_view module : Mox::moxModules()) {
    OrderedJson types = OrderedJson::array();
    for (const Mox::Type* const type : Mox::moxModuleTypes(module))
      types.push_back(typeJson(*type));
    json.push_back({{"module", module}, {"types", std::move(types)}});
  }
  return json;
}

}  // namespace

CommandOutput showTypes(const CommandCall& call) {
  return outputOf(call, writeModules, modulesJson);
}

}  // namespace ZelAgent
