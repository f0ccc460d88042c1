#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "PolicyMap/NumberRange.h"
#include "agent/config/Configuration.h"
#include "agent/config/JsonNode.h"

namespace ZelAgent {

/// The sets of one document that rules name.
///
/// A set with something that is not supported is spoiled: it is not used, and neither is a rule
/// that names it. Unless an error is recorded, every other set has a port or an address.
class DefinedSets final {
 public:
  void add(PrefixSet set) {
    knownPrefixSets_.emplace(set.family, set.name);
    prefixSets_.push_back(std::move(set));
  }
  void add(const std::string& name, std::vector<PolicyMap::NumberRange> ports) {
    portSets_[name] = std::move(ports);
  }
  /// A set whose name could not be read. Any name may be that of the set.
  void addUnreadable() { hasUnreadable_ = true; }
  void addSpoiled(const std::string& kind, const std::string& name) {
    spoiled_.emplace(kind, name);
  }

  /// Reads a member that names a prefix set of the family. Records an error, and returns an empty
  /// name, if there is none.
  [[nodiscard]] std::string readPrefixSet(const JsonNode& node, IpFamily family) const;
  /// The ports of the set that the member names. None after an error.
  [[nodiscard]] std::vector<PolicyMap::NumberRange> readPortSet(const JsonNode& node) const;
  [[nodiscard]] const std::vector<PrefixSet>& prefixSets() const noexcept { return prefixSets_; }

 private:
  void refuse(const JsonNode& node, const std::string& kind, const std::string& name) const;

  std::vector<PrefixSet> prefixSets_;
  std::set<std::pair<IpFamily, std::string>> knownPrefixSets_;
  std::map<std::string, std::vector<PolicyMap::NumberRange>> portSets_;
  std::set<std::pair<std::string, std::string>> spoiled_;  // kind and name
  bool hasUnreadable_ = false;
};

/// The sets of the `defined-sets` container of a document.
[[nodiscard]] DefinedSets readDefinedSets(const JsonObject& document);

}  // namespace ZelAgent
