#include "agent/config/OpenConfigReader.h"

#include "agent/config/DefinedSets.h"
#include "agent/config/DocumentWrapping.h"
#include "agent/config/InstanceReader.h"
#include "agent/config/JsonNode.h"
#include "agent/config/JsonText.h"

namespace ZelAgent {
namespace {

constexpr const char* instancesMember = "network-instances";

Configuration readRoot(const JsonNode& root) {
  const JsonObject document(root);
  (void)document.require(instancesMember);
  const DefinedSets sets = readDefinedSets(document);
  return {InstancesReader(sets).read(document.list(instancesMember, "network-instance")),
          sets.prefixSets()};
}

ReadConfiguration readDocument(JsonValue document, const std::string& file, Leniency leniency) {
  Findings findings(file, leniency);
  const JsonValue root = unwrapped(std::move(document), findings);
  findings.throwErrors();
  Configuration configuration = readRoot(JsonNode(root, "/", pathTree(), findings));
  findings.throwErrors();
  return {std::move(configuration), findings.warnings()};
}

}  // namespace

ReadConfiguration readOpenConfigFile(const std::string& file, Leniency leniency) {
  return readDocument(readDocumentFile(file), file, leniency);
}

ReadConfiguration readOpenConfig(const std::string& text, const std::string& file,
                                 Leniency leniency) {
  return readDocument(parseDocument(text, file), file, leniency);
}

}  // namespace ZelAgent
