#pragma once

#include <string>
#include <vector>

#include "agent/config/Configuration.h"

namespace ZelAgent {

struct ReadConfiguration {
  Configuration configuration;
  std::vector<std::string> warnings;  // Each is "FILE: PATH: WHAT".
};

/// Reads a configuration in the OpenConfig model "network-instance" with "policy-forwarding", as
/// JSON in the encoding of RFC 7951.
///
/// A configuration is returned only if the whole file is right. Otherwise a `ConfigError` says in
/// one line what is wrong. An unknown member, or a reference to a network instance that is not
/// configured, is a warning.
///
/// The rows that are read, from the top of the document:
///
///   network-instances/network-instance[name]
///     config/{name,type,fallback-network-instance}
///     interfaces/interface[id]/config/{id,interface,subinterface}
///     protocols/protocol[identifier,name]          STATIC only, others are a warning
///       static-routes/static[prefix]/next-hops/next-hop[index]/config/next-hop
///                                               .../interface-ref/config/{interface,subinterface}
///     policy-forwarding
///       policies/policy[policy-id]/config/{policy-id,type}
///         rules/rule[sequence-id]/config/sequence-id
///           {ipv4,ipv6}/config/{protocol,dscp,dscp-set,source-address,destination-address}
///           action/config/{network-instance,decap-network-instance,discard,
///                          decap-fallback-network-instance,post-decap-network-instance}
///       interfaces/interface[interface-id]/config/{interface-id,apply-vrf-selection-policy}
///                                         /interface-ref/config/{interface,subinterface}
[[nodiscard]] ReadConfiguration readOpenConfigFile(const std::string& file);

/// The same from a text. Messages call it `file`.
[[nodiscard]] ReadConfiguration readOpenConfig(const std::string& text, const std::string& file);

}  // namespace ZelAgent
