#include "agent/config/OpenConfigReader.h"

#include <initializer_list>
#include <set>
#include <string_view>
#include <utility>

#include "agent/config/DefinedSets.h"
#include "agent/config/DocumentWrapping.h"
#include "agent/config/InstanceReader.h"
#include "agent/config/JsonNode.h"
#include "agent/config/JsonText.h"
#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"

namespace ZelAgent {
namespace {

constexpr const char* instancesMember = "network-instances";

// The elements of a list inside the value. None if it has no such list.
const JsonValue::Array& listIn(const JsonValue& value,
                               std::initializer_list<std::string_view> names) {
  static const JsonValue::Array none;
  const JsonValue* const list = peek(value, names);
  const auto* const entries = list == nullptr ? nullptr : list->as<JsonValue::Array>();
  return entries == nullptr ? none : *entries;
}

// Of the interfaces of the system only the names are read, so one that is not enabled is worth a
// warning.
void warnOfDisabledInterfaces(const JsonNode& root) {
  for (const JsonValue& value : listIn(root.value(), {"interfaces", "interface"})) {
    const JsonNode entry(value, "/interfaces/interface", root.schema(), root.findings());
    if (!isDisabled(entry)) continue;
    const auto name = peekText(entry, {"name"});
    JsonNode(value, entry.path() + "[name=" + printable(name.value_or("")) + ']', root.schema(),
             root.findings())
        .warn("is not enabled, ignored; the interface is used where other leaves name it");
  }
}

void addName(std::set<std::string>& names, const std::string& name) {
  if (!name.empty() && name.size() <= Limits::nameBytes) names.insert(name);
}

// The interfaces of the system, and their subinterfaces but number 0. What is no name is left out.
std::set<std::string> interfacesOfTheSystem(const JsonNode& root) {
  std::set<std::string> names;
  for (const JsonValue& value : listIn(root.value(), {"interfaces", "interface"})) {
    const JsonValue* const member = peek(value, {"name"});
    const auto* const name = member == nullptr ? nullptr : member->as<std::string>();
    if (name == nullptr) continue;
    addName(names, *name);
    for (const JsonValue& part : listIn(value, {"subinterfaces", "subinterface"})) {
      const JsonValue* const index = peek(part, {"index"});
      const auto* const number = index == nullptr ? nullptr : index->as<std::uint64_t>();
      if (number != nullptr && *number != 0) addName(names, *name + '.' + std::to_string(*number));
    }
  }
  return names;
}

Configuration readRoot(const JsonNode& root, Progress& progress) {
  const JsonObject document(root);
  warnOfDisabledInterfaces(root);
  (void)document.require(instancesMember);
  const DefinedSets sets = readDefinedSets(document);
  Configuration configuration =
      InstancesReader(sets, progress).read(document.list(instancesMember, "network-instance"));
  configuration.otherInterfaces.merge(interfacesOfTheSystem(root));
  return configuration;
}

ReadConfiguration readDocument(JsonValue document, const std::string& file, Leniency leniency,
                               Progress& progress) {
  Findings findings(file, leniency);
  const JsonValue root = unwrapped(std::move(document), findings);
  findings.throwErrors();
  Configuration configuration = readRoot(JsonNode(root, "/", pathTree(), findings), progress);
  findings.throwErrors();
  return {std::move(configuration), findings.warnings()};
}

}  // namespace

ReadConfiguration readOpenConfigFile(const std::string& file, Leniency leniency) {
  Progress none({});
  return readOpenConfigFile(file, leniency, none);
}

ReadConfiguration readOpenConfigFile(const std::string& file, Leniency leniency,
                                     Progress& progress) {
  const ProgressOf shown(progress, "reading " + printable(file, Limits::shownTextBytes), "rules");
  return readDocument(readDocumentFile(file, progress), file, leniency, progress);
}

ReadConfiguration readOpenConfig(const std::string& text, const std::string& file,
                                 Leniency leniency) {
  Progress none({});
  return readDocument(parseDocument(text, file, none), file, leniency, none);
}

}  // namespace ZelAgent
