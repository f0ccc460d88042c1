#include "agent/config/DefinedSets.h"

#include <optional>

#include "agent/config/NumberRanges.h"
#include "agent/config/PrefixCover.h"
#include "agent/config/PrefixNode.h"
#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"

namespace ZelAgent {
namespace {

using PolicyMap::NumberRange;

const std::string portSetKind = "port-set";

std::string prefixSetKind(IpFamily family) {
  return toText(family) + "-prefix-set";
}

// The elements of a member that may be absent, each as `read` returns it.
template <class Element, class Read>
std::vector<Element> readList(const JsonNode* member, Read read) {
  std::vector<Element> list;
  if (member == nullptr) return list;
  for (const JsonNode& node : member->elements()) {
    if (const auto element = read(node)) list.push_back(*element);
  }
  return list;
}

// The same for a member that must be there and have an element.
template <class Element, class Read>
std::vector<Element> readFilledList(const JsonObject& config, const char* name, Read read) {
  const JsonNode* const member = config.require(name);
  const std::size_t before = config.node().findings().problems();
  std::vector<Element> list = readList<Element>(member, read);
  const bool isEmpty = list.empty() && config.node().findings().problems() == before;
  if (member != nullptr && isEmpty) member->refuse("must not be empty");
  return list;
}

std::optional<NumberRange> readPort(const JsonNode& node) {
  return readRange(node, mostPort);
}

class SetsReader final {
 public:
  SetsReader(const JsonObject& container, bool isRight) : container_(container) {
    if (!isRight) sets_.addUnreadable();
  }

  [[nodiscard]] DefinedSets read() {
    readPrefixSets(IpFamily::v4);
    readPrefixSets(IpFamily::v6);
    readSets(portSetKind, [this](const std::string& name, const JsonObject& config) {
      addPortSet(name, config);
    });
    return std::move(sets_);
  }

 private:
  void readPrefixSets(IpFamily family) {
    readSets(prefixSetKind(family), [&](const std::string& name, const JsonObject& config) {
      const auto read = [family](const JsonNode& node) { return readPrefixOf(family, node); };
      const std::size_t before = problems();
      const JsonNode* const exclude = config.find("exclude-prefix");
      PrefixSet set{name, family, readFilledList<IpPrefix>(config, "prefix", read),
                    readList<IpPrefix>(exclude, read)};
      if (exclude != nullptr && problems() == before && cover(set.excluded, set.prefixes)) {
        exclude->refuse("must leave an address of the set");
      }
      sets_.add(std::move(set));
    });
  }

  // Every rule that names the set has a copy of its ranges.
  void addPortSet(const std::string& name, const JsonObject& config) {
    std::vector<NumberRange> ports = readPorts(config);
    if (ports.size() <= Limits::portRanges) return sets_.add(name, std::move(ports));
    config.find("port")->refuseUnsupported(
        "must have at most " + std::to_string(Limits::portRanges) +
        " ranges, where ports beside each other are one range, not " +
        std::to_string(ports.size()));
    if (container_.node().findings().isLenient()) {
      sets_.addSpoiled(portSetKind, name);
    } else {
      sets_.add(name, {});
    }
  }

  [[nodiscard]] std::vector<NumberRange> readPorts(const JsonObject& config) const {
    const std::size_t before = problems();
    const auto ports = readFilledList<NumberRange>(config, "port", readPort);
    const JsonNode* const exclude = config.find("exclude-port");
    auto left = without(ports, readList<NumberRange>(exclude, readPort));
    const bool isRight = problems() == before;
    if (exclude != nullptr && isRight && left.empty()) {
      exclude->refuse("must leave a port of the set");
    }
    return left;
  }

  [[nodiscard]] std::size_t problems() const { return container_.node().findings().problems(); }

  // Reads the sets of one kind by `readContent`, which takes the name and the container `config`.
  template <class ReadContent>
  void readSets(const std::string& kind, ReadContent readContent) {
    UniqueKeys<std::string> names;
    const Findings& findings = container_.node().findings();
    const std::size_t beforeList = findings.problems();
    const auto entries = container_.list(kind + 's', kind);
    if (findings.problems() != beforeList) sets_.addUnreadable();
    for (const JsonNode& node : entries) {
      const std::size_t before = node.findings().problems();
      const JsonObject entry(node);
      const JsonObject config = entry.child("config");
      const auto name = readKey(entry, config, "name", readName);
      if (!name) sets_.addUnreadable();
      if (!names.add(name, node)) continue;
      const bool isSpoiled = node.findings().isLenient() && node.findings().problems() != before;
      if (isSpoiled) {
        sets_.addSpoiled(kind, *name);
      } else {
        readContent(*name, config);
      }
    }
  }

  const JsonObject& container_;
  DefinedSets sets_;
};

}  // namespace

void DefinedSets::refuse(const JsonNode& node, const std::string& kind,
                         const std::string& name) const {
  if (spoiled_.contains({kind, name})) {
    node.refuseUnsupported("names " + kind + ' ' + inQuotes(name) + ", which is not supported");
  } else if (!hasUnreadable_) {
    node.refuse("must be the name of an entry of " + kind + " in defined-sets, not " +
                inQuotes(name));
  }
}

std::string DefinedSets::readPrefixSet(const JsonNode& node, IpFamily family) const {
  const auto name = readName(node);
  if (!name) return {};
  if (knownPrefixSets_.contains({family, *name})) return *name;
  refuse(node, prefixSetKind(family), *name);
  return {};
}

std::vector<NumberRange> DefinedSets::readPortSet(const JsonNode& node) const {
  const auto name = readName(node);
  if (!name) return {};
  const auto set = portSets_.find(*name);
  if (set != portSets_.end()) return set->second;
  refuse(node, portSetKind, *name);
  return {};
}

DefinedSets readDefinedSets(const JsonObject& document) {
  const std::size_t before = document.node().findings().problems();
  const JsonObject container = document.child("defined-sets");
  SetsReader reader(container, document.node().findings().problems() == before);
  return reader.read();
}

}  // namespace ZelAgent
