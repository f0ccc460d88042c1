#pragma once

#include <string>
#include <vector>

#include "agent/config/Configuration.h"
#include "agent/config/DefinedSets.h"
#include "agent/config/JsonNode.h"

namespace ZelAgent {

/// Reads the container `transport` of a rule into its match, which has the fields of `ipv4` or
/// `ipv6` already. What the protocol must be is only checked if those fields are right.
class TransportReader final {
 public:
  TransportReader(const JsonNode& transport, const DefinedSets& sets, RuleMatch& match,
                  bool isHeaderRight)
      : config_(JsonObject(transport).child("config")),
        sets_(sets),
        match_(match),
        isHeaderRight_(isHeaderRight) {}

  void read();

 private:
  [[nodiscard]] std::vector<PolicyMap::NumberRange> readPorts(const std::string& side) const;
  void readDetails();
  void readExplicitDetails(const JsonNode& mode);
  void readBuiltinDetail(const JsonNode& mode);
  void leaveOutFirstFragment(const JsonNode& detail);
  void refuseWithoutMode(const char* leaf, const char* mode) const;
  void needProtocol(const JsonNode& node, bool allowsUdp) const;
  void needFamily(const JsonNode& node) const;

  JsonObject config_;
  const DefinedSets& sets_;
  RuleMatch& match_;
  bool isHeaderRight_;
};

}  // namespace ZelAgent
