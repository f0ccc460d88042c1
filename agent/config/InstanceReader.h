#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "agent/config/Configuration.h"
#include "agent/config/DefinedSets.h"
#include "agent/config/InstanceNames.h"
#include "agent/config/JsonNode.h"
#include "agent/language/Progress.h"

namespace ZelAgent {

/// Checks that the whole configuration binds each interface only once.
class InterfaceOwners final {
 public:
  void add(const std::string& interface, const JsonNode& entry);

 private:
  std::map<std::string, std::string> owners_;
};

/// Reads the network instances of one document, which use its defined sets.
///
/// The names and types of all instances are read first, so that each reference to an instance can
/// be checked. Instances of other types and disabled ones are not read further. Each rule is a step
/// of the progress.
class InstancesReader final {
 public:
  InstancesReader(const DefinedSets& sets, Progress& progress) : sets_(sets), progress_(progress) {}

  /// Reads the entries of the list, once. They are the only ones of the document.
  [[nodiscard]] Configuration read(const std::vector<JsonNode>& entries);

 private:
  // An instance that is used.
  struct Header {
    JsonObject entry;
    JsonObject config;
    NetworkInstance instance;
  };

  void readHeader(const JsonNode& node);
  [[nodiscard]] InstanceType readType(const Header& header) const;
  void readContent(Header& header);
  void readInterfaces(const JsonObject& instanceEntry, NetworkInstance& instance);
  void readPolicyForwarding(const JsonObject& policyForwarding, NetworkInstance& instance);

  const DefinedSets& sets_;
  Progress& progress_;
  InstanceNames names_;
  UniqueKeys<std::string> keys_;
  std::vector<Header> headers_;
  std::optional<std::string> defaultInstance_;  // as the document calls it
  InterfaceOwners vrfOfInterface_;
  InterfaceOwners policyOfInterface_;
  std::set<std::string> disabledInterfaces_;
};

}  // namespace ZelAgent
