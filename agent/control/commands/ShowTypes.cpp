#include "agent/control/commands/ShowTypes.h"

#include "Mox/Type.h"

namespace ZelAgent {
namespace {

void writeModules(std::ostream& out) {
  for (const std::string_view module : Mox::moxModules()) {
    out << "module " << module << '\n';
    for (const Mox::Type* const type : Mox::moxModuleTypes(module))
      out << "  " << type->name << '\n';
  }
}

OrderedJson modulesJson() {
  OrderedJson json = OrderedJson::array();
  for (const std::string_view module : Mox::moxModules()) {
    OrderedJson types = OrderedJson::array();
    for (const Mox::Type* const type : Mox::moxModuleTypes(module))
      types.push_back(type->name);
    json.push_back({{"module", module}, {"types", std::move(types)}});
  }
  return json;
}

}  // namespace

CommandOutput showTypes(const CommandCall& call) {
  return outputOf(call, writeModules, modulesJson);
}

}  // namespace ZelAgent
