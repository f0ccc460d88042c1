#include "agent/config/OpenConfigReader.h"

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

// The interfaces of the system are not read, so one that is not enabled is worth a warning.
void warnOfDisabledInterfaces(const JsonNode& root) {
  const JsonValue* const list = peek(root.value(), {"interfaces", "interface"});
  const auto* const entries = list == nullptr ? nullptr : list->as<JsonValue::Array>();
  if (entries == nullptr) return;
  for (const JsonValue& value : *entries) {
    const JsonNode entry(value, "/interfaces/interface", root.schema(), root.findings());
    if (!isDisabled(entry)) continue;
    const auto name = peekText(entry, {"name"});
    JsonNode(value, entry.path() + "[name=" + printable(name.value_or("")) + ']', root.schema(),
             root.findings())
        .warn("is not enabled, ignored; the interface is used where other leaves name it");
  }
}

Configuration readRoot(const JsonNode& root, Progress& progress) {
  const JsonObject document(root);
  warnOfDisabledInterfaces(root);
  (void)document.require(instancesMember);
  const DefinedSets sets = readDefinedSets(document);
  return InstancesReader(sets, progress).read(document.list(instancesMember, "network-instance"));
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
